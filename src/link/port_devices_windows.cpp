// The ports that Windows names itself (HKEY_LOCAL_MACHINE\HARDWARE\DEVICEMAP\SERIALCOMM) belong
// here; it is not written yet, so that a Windows program does not link.
