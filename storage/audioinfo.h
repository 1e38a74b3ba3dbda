#pragma once

#include <cstddef>

// What getaudioinfo() learns about an MP3 file. Text fields are NUL-terminated and cut to fit.
struct audioinfo
{
    char name[30]; // title, ID3 frame TIT2
    char year[5];
    char Comment[30];
    char Artist[30]; // ID3 frame TPE1
    char Album[30];
    char Genre[30];
    int bitrate;    // bit/s, averaged over the audio frames
    int samplerate; // Hz
    int filesize;
    int stearmsize; // bytes handed to the frame walk
    int seconds;    // play length, whole seconds
    bool isid3tag;
    char play_time[20]; // "%02u:%02u:%02u", room for any count of hours
};

// The result of a walk over MPEG audio frames. A Xing/Info frame carries no audio and is never
// counted; when it states the frame count, that count is taken instead of walking.
struct Mp3FrameScan
{
    long frames = 0;
    long long milliseconds = 0;
    int bitrate = 0;
    int samplerate = 0;
    bool fromXingCount = false;
};

Mp3FrameScan scanMp3Frames(const unsigned char *data, size_t size);

void initaudioinfo(audioinfo *info);
// fills bitrate, samplerate, seconds and play_time from the frames in data; 0
int scan(const unsigned char *data, size_t size, audioinfo *info);
// title and artist from an ID3v2 tag at the start of head or, failing that, an ID3v1 tag in
// tail (the file's last 128 bytes); 0 when a tag was found, -1 otherwise
int get_id3(const unsigned char *head, size_t headSize, const unsigned char *tail, size_t tailSize,
            audioinfo *info);
void set_audio_id3tag(char *field, size_t width, const char *text);
char *trim_whitespace(char *text);
void printf_struct(const audioinfo *info);

// 0, or -5 (no path), -1 (not a regular file, shorter than 128 bytes), -3 (no status),
// -2 (mapping refused), -4 (unmapping failed)
int getaudioinfo(const char *path, audioinfo *info);
