#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>

// Writes a fuzz input as the device file devicePath (such as "/apps/config/reclist.ini") below
// this process's own temporary device root, which the first call makes and points RECORDER_ROOT
// at; Qt's log messages are dropped from then on. Returns the file's path on this machine.
QByteArray fuzzDeviceFile(const char *devicePath, const uint8_t *data, size_t size);
