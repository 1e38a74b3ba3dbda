#pragma once

#include <string>

class QMutex;

// Kept for the music list's readers; the scan itself takes no lock.
extern QMutex mutexScan;

// Thread body for start-up: runs scanmusic() once and ends the thread. startMusicScan() starts
// it; a thread started otherwise works as well but is not known to waitForMusicScan().
void *scanthread(void *);

// Writes /apps/config/musiclist.txt: the .mp3* files directly in /mnt/mmc/ and
// /mnt/mmc/e_Music, one device path per line, in descending byte order.
void scanmusic();

// the list's order: true when a compares greater than b
bool lessthanbyname(const std::string &a, const std::string &b);

// Start-up's scan: scanthread on a detached thread of idle priority, so that on the pen's one
// core it takes only the time the window leaves while it comes up. false when no thread started.
bool startMusicScan();

// The window is on screen: a scan still running competes as an ordinary thread from now on.
void musicScanWindowShown();

// Returns once the scan started by startMusicScan() has written the list (at once when none
// runs), so that a process that ends soon after it shows still leaves the list whole.
void waitForMusicScan();
