; SPDX-License-Identifier: GPL-3.0-or-later
; Installs the program for the user who runs it: no administrator, nothing outside his own folders.
; What he measured lies in Documents\DAVO or beside the program; removing the program leaves both.
; The program is for 64 bit, and so is what installs it.
Target amd64-unicode
!include MUI2.nsh
!include FileFunc.nsh

Name "DAVO PC-Interface ${VERSION}"
OutFile "${OUT}"
RequestExecutionLevel user
InstallDir "$LOCALAPPDATA\Programs\DAVO PC-Interface"
InstallDirRegKey HKCU "Software\DAVO PC-Interface" "Folder"
SetCompressor /SOLID lzma
ManifestDPIAware true

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\DAVO PC-Interface"

!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN "$INSTDIR\davo.exe"
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

Section
  SetOutPath "$INSTDIR"
  File /r "${FILES}/*"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  CreateShortcut "$SMPROGRAMS\DAVO PC-Interface.lnk" "$INSTDIR\davo.exe"
  WriteRegStr HKCU "Software\DAVO PC-Interface" "Folder" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL}" "DisplayName" "DAVO PC-Interface"
  WriteRegStr HKCU "${UNINSTALL}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${UNINSTALL}" "DisplayIcon" "$INSTDIR\davo.exe"
  WriteRegStr HKCU "${UNINSTALL}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${UNINSTALL}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${UNINSTALL}" "NoModify" 1
  WriteRegDWORD HKCU "${UNINSTALL}" "NoRepair" 1
  ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
  WriteRegDWORD HKCU "${UNINSTALL}" "EstimatedSize" $0
SectionEnd

; Only what was installed is removed, by name: Shots_Data and Shots_Excel may lie beside it, and so
; may anything else.
Section "un.Remove"
  Delete "$INSTDIR\davo.exe"
  Delete "$INSTDIR\davo-report.exe"
  Delete "$INSTDIR\davo-line.exe"
  Delete "$INSTDIR\*.dll"
  Delete "$INSTDIR\DAVO_Header.xls"
  Delete "$INSTDIR\read-me.txt"
  RMDir /r "$INSTDIR\platforms"
  RMDir /r "$INSTDIR\styles"
  RMDir /r "$INSTDIR\imageformats"
  RMDir /r "$INSTDIR\licences"
  RMDir /r "$INSTDIR\guide"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\DAVO PC-Interface.lnk"
  DeleteRegKey HKCU "${UNINSTALL}"
  DeleteRegKey HKCU "Software\DAVO PC-Interface"
SectionEnd
