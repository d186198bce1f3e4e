; SPDX-License-Identifier: GPL-3.0-or-later
; Installs the program for the user who runs it: no administrator, nothing outside their own folders.
; Records are in Documents\DAVO or next to the program; removing the program leaves both.
; The program is for 64 bit, and so is what installs it.
;
; Exit codes: 0 done, 1 cancelled, 3 the program is running, 4 a file is not as it must be.
Target amd64-unicode
!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh
!include WordFunc.nsh
!include "${LIST}"

Name "DAVO PC-Interface ${VERSION}"
OutFile "${OUT}"
RequestExecutionLevel user
InstallDir "$LOCALAPPDATA\Programs\DAVO PC-Interface"
InstallDirRegKey HKCU "Software\DAVO PC-Interface" "Folder"
SetCompressor /SOLID lzma
ManifestDPIAware true
!uninstfinalize '"${SIGN}" "%1"'

!define PUBLISHER "DAVO maintainers"
VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "DAVO PC-Interface"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "DAVO PC-Interface Setup"
VIAddVersionKey "CompanyName" "${PUBLISHER}"
VIAddVersionKey "LegalCopyright" "2026 ${PUBLISHER}, GPL-3.0-or-later"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\DAVO PC-Interface"
!define LETTERHEAD "DAVO_Header.xls"
!define RUNNING 3
!define DAMAGED 4

!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN "$INSTDIR\davo.exe"
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

Var faults  ; names of the files that are not as they must be
Var ownLetterhead  ; "yes" when the folder has one that the user may have changed

!macro SharedFunctions un
; Ends here, with nothing changed, while a program of this folder runs: Windows keeps its file from
; being written. A program is never ended from here, it may be in a session.
Function ${un}RefuseWhileRunning
  ${Do}
    StrCpy $0 ""
    !insertmacro NameWhenHeld "davo.exe"
    !insertmacro NameWhenHeld "davo-report.exe"
    !insertmacro NameWhenHeld "davo-line.exe"
    ${If} $0 == ""
      Return
    ${EndIf}
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$0 is running, or may not be written.$\r$\nEnd \
it (in DAVO PC-Interface: File, Exit), then choose Retry. Nothing has been changed." /SD IDCANCEL IDRETRY ${un}again
    SetErrorLevel ${RUNNING}
    Quit
    ${un}again:
  ${Loop}
FunctionEnd

; $1 becomes the SHA-256 of the file $0, empty when it cannot be read.
Function ${un}Hash
  StrCpy $1 ""
  System::Call 'kernel32::CreateFileW(w r0, i 0x80000000, i 1, p 0, i 3, i 0, p 0) p .r2'
  System::Call 'kernel32::GetFileSize(p r2, p 0) i .r3'
  System::Call 'kernel32::CreateFileMappingW(p r2, p 0, i 2, i 0, i 0, p 0) p .r4'
  System::Call 'kernel32::MapViewOfFile(p r4, i 4, i 0, i 0, p 0) p .r5'
  ${If} $5 P<> 0
    System::Alloc 32
    Pop $6
    System::Call 'bcrypt::BCryptOpenAlgorithmProvider(*p .r7, w "SHA256", p 0, i 0) i .r8'
    System::Call 'bcrypt::BCryptHash(p r7, p 0, i 0, p r5, i r3, p r6, i 32) i .r8'
    System::Call 'bcrypt::BCryptCloseAlgorithmProvider(p r7, i 0)'
    ${If} $8 = 0
      ; In hexadecimal digits and nothing else.
      System::Call 'crypt32::CryptBinaryToStringW(p r6, i 32, i 0x4000000C, w .r1, *i 256)'
    ${EndIf}
    System::Free $6
    System::Call 'kernel32::UnmapViewOfFile(p r5)'
  ${EndIf}
  System::Call 'kernel32::CloseHandle(p r4)'
  System::Call 'kernel32::CloseHandle(p r2)'
FunctionEnd
!macroend

; $0 becomes the program's name when it is there and cannot be written.
!macro NameWhenHeld FILE
  ${If} ${FileExists} "$INSTDIR\${FILE}"
    ClearErrors
    FileOpen $1 "$INSTDIR\${FILE}" a
    ${If} ${Errors}
      StrCpy $0 "${FILE}"
    ${Else}
      FileClose $1
    ${EndIf}
  ${EndIf}
!macroend

!insertmacro SharedFunctions ""
!insertmacro SharedFunctions "un."

Function .onInit
  Call RefuseWhileRunning
FunctionEnd

Function un.onInit
  Call un.RefuseWhileRunning
FunctionEnd

; What the version that is there has installed, by its own list. A letterhead that the user changed
; is his.
Function RemoveFormer
  StrCpy $ownLetterhead ""
  ${If} ${FileExists} "$INSTDIR\files.sha256"
    FileOpen $R0 "$INSTDIR\files.sha256" r
    ${Do}
      ClearErrors
      FileRead $R0 $R1
      ${If} ${Errors}
        ${Break}
      ${EndIf}
      StrCpy $R2 $R1 64
      StrCpy $R3 $R1 "" 66
      ${WordReplace} $R3 "$\n" "" "+" $R3
      ${WordReplace} $R3 "/" "\" "+" $R3
      ${If} $R3 == "${LETTERHEAD}"
        StrCpy $0 "$INSTDIR\${LETTERHEAD}"
        Call Hash
        ${If} $1 != $R2
          ${Continue}
        ${EndIf}
      ${EndIf}
      Delete "$INSTDIR\$R3"
    ${Loop}
    FileClose $R0
  ${EndIf}
  ${If} ${FileExists} "$INSTDIR\${LETTERHEAD}"
    StrCpy $ownLetterhead "yes"
  ${EndIf}
FunctionEnd

!macro Check FILE SUM
  ${If} "${FILE}" != "${LETTERHEAD}"
  ${OrIf} $ownLetterhead == ""
    StrCpy $0 "$INSTDIR\${FILE}"
    Call Hash
    ${If} $1 != "${SUM}"
      StrCpy $faults "$faults$\r$\n${FILE}"
    ${EndIf}
  ${EndIf}
!macroend

Section
  Call RefuseWhileRunning
  Call RemoveFormer
  SetOutPath "$INSTDIR"
  File /r /x "${LETTERHEAD}" "${FILES}/*"
  SetOverwrite off
  File "${FILES}/${LETTERHEAD}"
  SetOverwrite on
  WriteUninstaller "$INSTDIR\uninstall.exe"
  CreateShortcut "$SMPROGRAMS\DAVO PC-Interface.lnk" "$INSTDIR\davo.exe"
  WriteRegStr HKCU "Software\DAVO PC-Interface" "Folder" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL}" "DisplayName" "DAVO PC-Interface"
  WriteRegStr HKCU "${UNINSTALL}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${UNINSTALL}" "Publisher" "${PUBLISHER}"
  WriteRegStr HKCU "${UNINSTALL}" "DisplayIcon" "$INSTDIR\davo.exe"
  WriteRegStr HKCU "${UNINSTALL}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${UNINSTALL}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${UNINSTALL}" "NoModify" 1
  WriteRegDWORD HKCU "${UNINSTALL}" "NoRepair" 1
  ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
  WriteRegDWORD HKCU "${UNINSTALL}" "EstimatedSize" $0
  !insertmacro EachFile Check
  ${If} $faults != ""
    MessageBox MB_OK|MB_ICONSTOP "These files are not as they must be:$\r$\n$faults$\r$\n$\r$\nThe \
disk may be full, or another program may hold or change them. Run this setup again. Your records and \
settings are as they were." /SD IDOK
    SetErrorLevel ${DAMAGED}
    Abort "Files are not as they must be: $faults"
  ${EndIf}
SectionEnd

!macro Remove FILE SUM
  StrCpy $1 "${SUM}"
  ${If} "${FILE}" == "${LETTERHEAD}"
    StrCpy $0 "$INSTDIR\${FILE}"
    Call un.Hash
  ${EndIf}
  ${If} $1 == "${SUM}"
    Delete "$INSTDIR\${FILE}"
  ${EndIf}
!macroend

!macro RemoveFolder FOLDER
  RMDir "$INSTDIR\${FOLDER}"
!macroend

; Only what was installed is removed, by name: Shots_Data and Shots_Excel may be next to it, and so
; may anything else.
Section "un.Remove"
  Call un.RefuseWhileRunning
  !insertmacro EachFile Remove
  !insertmacro EachFolder RemoveFolder
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\DAVO PC-Interface.lnk"
  DeleteRegKey HKCU "${UNINSTALL}"
  DeleteRegKey HKCU "Software\DAVO PC-Interface"
SectionEnd
