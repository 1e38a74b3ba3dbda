#include "storage/audioinfo.h"

#include "storage/mappedfile.h"

#include <QString>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <id3tag.h>
#include <mad.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

unsigned long bigEndian32(const unsigned char *p)
{
    return (static_cast<unsigned long>(p[0]) << 24) | (static_cast<unsigned long>(p[1]) << 16) |
           (static_cast<unsigned long>(p[2]) << 8) | static_cast<unsigned long>(p[3]);
}

// A Xing/Info frame sits where the side information of a Layer III frame would start.
// Returns true for such a frame; *count gets its frame count, or 0 when it states none.
bool readXingFrame(const mad_stream &stream, const mad_header &header, unsigned long *count)
{
    *count = 0;
    if (header.layer != MAD_LAYER_III)
        return false;
    const bool mono = header.mode == MAD_MODE_SINGLE_CHANNEL;
    const bool mpeg1 = !(header.flags & MAD_FLAG_LSF_EXT);
    const size_t sideInfo = mpeg1 ? (mono ? 17 : 32) : (mono ? 9 : 17);
    const size_t offsets[2] = {4 + sideInfo, 4 + sideInfo + 2};
    const int tries = (header.flags & MAD_FLAG_PROTECTION) ? 2 : 1;
    for (int i = 0; i < tries; ++i) {
        const unsigned char *p = stream.this_frame + offsets[i];
        if (p + 12 > stream.next_frame || p + 12 > stream.bufend)
            continue;
        if (std::memcmp(p, "Xing", 4) != 0 && std::memcmp(p, "Info", 4) != 0)
            continue;
        if (bigEndian32(p + 4) & 1)
            *count = bigEndian32(p + 8);
        return true;
    }
    return false;
}

void setPlayTime(audioinfo *info, unsigned long seconds)
{
    std::snprintf(info->play_time, sizeof info->play_time, "%02u:%02u:%02u",
                  static_cast<unsigned>(seconds / 3600), static_cast<unsigned>(seconds / 60 % 60),
                  static_cast<unsigned>(seconds % 60));
}

// the first text of a frame, in the local 8-bit encoding
bool frameText(const id3_tag *tag, const char *id, char *field, size_t width)
{
    const id3_frame *frame = id3_tag_findframe(tag, id, 0);
    if (!frame)
        return false;
    const id3_field *strings = id3_frame_field(frame, 1);
    if (!strings || id3_field_getnstrings(strings) == 0)
        return false;
    const id3_ucs4_t *ucs4 = id3_field_getstrings(strings, 0);
    if (!ucs4)
        return false;
    id3_utf8_t *utf8 = id3_ucs4_utf8duplicate(ucs4);
    if (!utf8)
        return false;
    const QByteArray local = QString::fromUtf8(reinterpret_cast<const char *>(utf8)).toLocal8Bit();
    std::free(utf8);
    set_audio_id3tag(field, width, local.constData());
    return true;
}

unsigned long syncsafe32(const unsigned char *p)
{
    return (static_cast<unsigned long>(p[0] & 0x7f) << 21) |
           (static_cast<unsigned long>(p[1] & 0x7f) << 14) |
           (static_cast<unsigned long>(p[2] & 0x7f) << 7) | static_cast<unsigned long>(p[3] & 0x7f);
}

// The decoded sizes that the compressed frames of an ID3v2.3/2.4 tag claim, summed. libid3tag
// allocates a frame's claimed size (up to 4 GiB) before it inflates the frame.
unsigned long long inflatedSize(const unsigned char *tag, size_t size)
{
    if (size < 10 || std::memcmp(tag, "ID3", 3) != 0 || (tag[3] != 3 && tag[3] != 4))
        return 0;
    const int major = tag[3];
    const unsigned char *p = tag + 10;
    const unsigned char *end = tag + size;
    std::vector<unsigned char> plain;
    if (major == 3 && (tag[5] & 0x80)) {
        // a 2.3 tag unsynchronised as a whole: FF 00 stands for FF
        for (const unsigned char *q = p; q < end; ++q) {
            plain.push_back(*q);
            if (*q == 0xff && q + 1 < end && q[1] == 0)
                ++q;
        }
        p = plain.data();
        end = p + plain.size();
    }
    if (tag[5] & 0x40) {
        if (end - p < 4)
            return 0;
        const unsigned long extended = major == 3 ? 4 + bigEndian32(p) : syncsafe32(p);
        if (extended > static_cast<size_t>(end - p))
            return 0;
        p += extended;
    }
    unsigned long long total = 0;
    while (end - p >= 10 && p[0] != 0) {
        const unsigned long frameSize = major == 3 ? bigEndian32(p + 4) : syncsafe32(p + 4);
        const unsigned char flags = p[9];
        const unsigned char *data = p + 10;
        if (major == 3 && (flags & 0x80) && end - data >= 4) {
            total += bigEndian32(data);
        } else if (major == 4 && (flags & 0x08) && (flags & 0x01)) {
            // grouping and encryption bytes come before the data length
            const long skip = ((flags & 0x40) ? 1 : 0) + ((flags & 0x04) ? 1 : 0);
            if (end - data >= skip + 4)
                total += syncsafe32(data + skip);
        }
        if (frameSize > static_cast<size_t>(end - data))
            break;
        p = data + frameSize;
    }
    return total;
}

// the ID3 tag at the start of data, if there is one; a tag whose frames would inflate to more
// than a recording's texts can need is not read
id3_tag *parseTag(const unsigned char *data, size_t size)
{
    const unsigned long long maxInflated = 1 << 20;
    if (size < ID3_TAG_QUERYSIZE)
        return nullptr;
    const long tagSize = id3_tag_query(data, size);
    if (tagSize <= 0 || static_cast<size_t>(tagSize) > size ||
        inflatedSize(data, static_cast<size_t>(tagSize)) > maxInflated)
        return nullptr;
    return id3_tag_parse(data, static_cast<id3_length_t>(tagSize));
}

} // namespace

Mp3FrameScan scanMp3Frames(const unsigned char *data, size_t size)
{
    Mp3FrameScan result;
    size_t start = 0;
    if (size >= ID3_TAG_QUERYSIZE) {
        const long tagSize = id3_tag_query(data, size);
        if (tagSize > 0 && static_cast<size_t>(tagSize) < size)
            start = static_cast<size_t>(tagSize);
    }

    mad_stream stream;
    mad_header header;
    mad_stream_init(&stream);
    mad_header_init(&header);
    mad_stream_buffer(&stream, data + start, size - start);
    // the first frame must be followed by another header: a stray sync word is not a frame
    stream.sync = 0;

    mad_timer_t total = mad_timer_zero;
    unsigned long long bitSum = 0;
    unsigned layer = 0;
    unsigned rate = 0;
    bool first = true;
    // libmad wants MAD_BUFFER_GUARD bytes after a frame before it decodes its header, so the
    // last frame is decoded from a copy padded with zeros
    std::vector<unsigned char> tail;
    for (;;) {
        if (mad_header_decode(&header, &stream) == -1) {
            if (stream.error == MAD_ERROR_BUFLEN) {
                if (!tail.empty())
                    break;
                const size_t rest = static_cast<size_t>(stream.bufend - stream.next_frame);
                tail.assign(stream.next_frame, stream.bufend);
                tail.resize(rest + MAD_BUFFER_GUARD, 0);
                mad_stream_buffer(&stream, tail.data(), tail.size());
                continue;
            }
            if (MAD_RECOVERABLE(stream.error))
                continue;
            break;
        }
        if (first) {
            first = false;
            layer = header.layer;
            rate = header.samplerate;
            result.samplerate = static_cast<int>(rate);
            unsigned long count = 0;
            if (readXingFrame(stream, header, &count)) {
                if (count > 0) {
                    mad_timer_t frame = header.duration;
                    mad_timer_multiply(&frame, static_cast<long>(count));
                    result.frames = static_cast<long>(count);
                    result.milliseconds = mad_timer_count(frame, MAD_UNITS_MILLISECONDS);
                    result.bitrate = static_cast<int>(header.bitrate);
                    result.fromXingCount = true;
                    break;
                }
                continue;
            }
        } else if (header.layer != layer || header.samplerate != rate) {
            // a false sync word inside the data: look again one byte further on
            stream.sync = 0;
            stream.next_frame = stream.this_frame + 1;
            continue;
        }
        ++result.frames;
        bitSum += header.bitrate;
        mad_timer_add(&total, header.duration);
    }
    mad_header_finish(&header);
    mad_stream_finish(&stream);

    if (!result.fromXingCount) {
        result.milliseconds = mad_timer_count(total, MAD_UNITS_MILLISECONDS);
        if (result.frames > 0)
            result.bitrate = static_cast<int>(bitSum / static_cast<unsigned long>(result.frames));
    }
    return result;
}

void initaudioinfo(audioinfo *info)
{
    std::memset(info, 0, sizeof *info);
}

int scan(const unsigned char *data, size_t size, audioinfo *info)
{
    const Mp3FrameScan frames = scanMp3Frames(data, size);
    info->bitrate = frames.bitrate;
    info->samplerate = frames.samplerate;
    info->seconds = static_cast<int>(frames.milliseconds / 1000);
    setPlayTime(info, static_cast<unsigned long>(info->seconds));
    return 0;
}

int get_id3(const unsigned char *head, size_t headSize, const unsigned char *tail, size_t tailSize,
            audioinfo *info)
{
    id3_tag *tag = parseTag(head, headSize);
    if (!tag && tail)
        tag = parseTag(tail, tailSize);
    if (!tag)
        return -1;
    info->isid3tag = true;
    frameText(tag, ID3_FRAME_TITLE, info->name, sizeof info->name);
    frameText(tag, ID3_FRAME_ARTIST, info->Artist, sizeof info->Artist);
    id3_tag_delete(tag);
    return 0;
}

void set_audio_id3tag(char *field, size_t width, const char *text)
{
    if (width == 0)
        return;
    std::strncpy(field, text ? text : "", width - 1);
    field[width - 1] = '\0';
    trim_whitespace(field);
}

char *trim_whitespace(char *text)
{
    size_t length = std::strlen(text);
    while (length > 0 && std::isspace(static_cast<unsigned char>(text[length - 1])))
        text[--length] = '\0';
    size_t lead = 0;
    while (lead < length && std::isspace(static_cast<unsigned char>(text[lead])))
        ++lead;
    if (lead > 0)
        std::memmove(text, text + lead, length - lead + 1);
    return text;
}

void printf_struct(const audioinfo *info)
{
    std::printf("name is %s\n", info->name);
    std::printf("year is %s\n", info->year);
    std::printf("Comment is %s\n", info->Comment);
    std::printf("Artist is %s\n", info->Artist);
    std::printf("Album is %s\n", info->Album);
    std::printf("Genre is %s\n", info->Genre);
    std::printf("bitrate is %ld\n", static_cast<long>(info->bitrate));
    std::printf("samplerate is %d\n", info->samplerate);
    std::printf("filesize is %d\n", info->filesize);
    std::printf("stearmsize is %d\n", info->stearmsize);
    std::printf("seconds is %ld\n", static_cast<long>(info->seconds));
    std::printf("isid3tag is %d\n", info->isid3tag ? 1 : 0);
    std::printf("play_time is %s\n", info->play_time);
}

int getaudioinfo(const char *path, audioinfo *info)
{
    if (!path || !info)
        return -5;
    initaudioinfo(info);

    MappedFile file(path);
    if (file.fd() == 0) {
        std::printf("open file error");
        return -1;
    }
    struct stat status;
    if (::fstat(file.fd(), &status) != 0) {
        std::perror("stat");
        return -3;
    }
    if (!S_ISREG(status.st_mode)) {
        std::fprintf(stderr, "%s: Not a regular file\n", path);
        return -1;
    }
    if (status.st_size < 128)
        return -1;

    unsigned char tail[128];
    if (::pread(file.fd(), tail, sizeof tail, status.st_size - 128) != 128)
        return -1;
    info->filesize = static_cast<int>(status.st_size);
    size_t streamSize = static_cast<size_t>(status.st_size);
    if (info->isid3tag)
        --streamSize;
    if (std::memcmp(tail, "TAG", 3) == 0)
        --streamSize;
    info->stearmsize = static_cast<int>(streamSize);

    if (!file.map(streamSize)) {
        std::perror("mmap");
        return -2;
    }
    scan(file.data(), file.size(), info);
    get_id3(file.data(), file.size(), tail, sizeof tail, info);
    if (!file.unmap()) {
        std::perror("munmap");
        return -4;
    }
    return 0;
}
