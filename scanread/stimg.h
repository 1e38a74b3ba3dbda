#pragma once

// One scanned line image on its way from the scanner's callback to recognition. Whoever holds
// it last frees it with freeImg(): the recognition step, or Recognize when it refuses the image.
struct _stImg // NOLINT(bugprone-reserved-identifier): the record's name on the device
{
    unsigned char *buffer = nullptr; // a second buffer, freed with the record when set
    unsigned char *pixels = nullptr; // width x height bytes, null for an empty image
    int width = 0;
    int height = 0;
    unsigned char flag = 0;
};

// A record holding its own copy of the pixels (none when pixels is null or the size is empty).
_stImg *createImg(const unsigned char *pixels, int width, int height, unsigned char flag);
// Frees both buffers and the record; null is allowed.
void freeImg(_stImg *img);
