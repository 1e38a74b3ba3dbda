#pragma once

class MyEdit;

// The scanner's side of the scan view: sets up image acquisition and hands each scanned line to
// the view it delivers to. The callback runs on the scanner's own thread.
class RecChar
{
public:
    RecChar() = default;
    ~RecChar();
    RecChar(const RecChar &) = delete;
    RecChar &operator=(const RecChar &) = delete;

    // 0, or -1 when the scanner did not start (the callback is registered either way)
    static int init();
    static int Uninitial();
    // the view scanned lines go to; null drops them
    static void setEdit(MyEdit *edit);
    static int ReceivePanoImage(void *context, unsigned char *pixels, int width, int height,
                                unsigned char flag, char *extra);
};
