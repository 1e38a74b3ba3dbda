#include "scanread/stimg.h"

#include <cstring>

_stImg *createImg(const unsigned char *pixels, int width, int height, unsigned char flag)
{
    auto *img = new _stImg;
    img->width = width;
    img->height = height;
    img->flag = flag;
    if (pixels && width > 0 && height > 0) {
        const size_t size = size_t(width) * size_t(height);
        img->pixels = new unsigned char[size];
        std::memcpy(img->pixels, pixels, size);
    }
    return img;
}

void freeImg(_stImg *img)
{
    if (!img)
        return;
    delete[] img->buffer;
    delete[] img->pixels;
    delete img;
}
