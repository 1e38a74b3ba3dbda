#pragma once

#include <string>

class QMutex;

// Kept for the music list's readers; the scan itself takes no lock.
extern QMutex mutexScan;

// Thread body for start-up: runs scanmusic() once and ends the thread. Start it detached:
//   pthread_t t; pthread_create(&t, nullptr, scanthread, nullptr); pthread_detach(t);
void *scanthread(void *);

// Writes /apps/config/musiclist.txt: the .mp3* files directly in /mnt/mmc/ and
// /mnt/mmc/e_Music, one device path per line, in descending byte order.
void scanmusic();

// the list's order: true when a compares greater than b
bool lessthanbyname(const std::string &a, const std::string &b);
