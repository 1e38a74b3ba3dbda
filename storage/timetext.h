#pragma once

// Seconds as clock text: "%02d:%02d", or "%02d:%02d:%02d" from one hour on; a negative length
// reads 00:00. `out` holds at least 9 bytes (more for 100 hours and over). Returns out.
char *sec2string(long seconds, char *out);

// The play length of a canonical PCM WAV file from its header and its size, written into out
// (" " when it cannot be measured). -1 only when the file cannot be opened, else 0.
int getWaveDuration(const char *path, char *out);
