// The serial port over the Win32 calls (overlapped reads, QWinEventNotifier) belongs here; it is
// not written yet, so that a Windows program does not link.
