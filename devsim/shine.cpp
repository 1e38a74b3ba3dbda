// shine -b KBPS -s RATE FILE: records mono audio at RATE Hz into an MP3 file until it is killed.

#include "audiosource.h"
#include "uniquefd.h"

extern "C" {
#include <shine/layer3.h>
}

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <unistd.h>
#include <vector>

namespace {

struct ShineCloser
{
    void operator()(shine_global_flags *encoder) const { shine_close(encoder); }
};
using Encoder = std::unique_ptr<shine_global_flags, ShineCloser>;

int usage()
{
    std::fprintf(stderr, "usage: shine -b KBPS -s RATE FILE\n");
    return 2;
}

} // namespace

int main(int argc, char **argv)
{
    int kbps = 128;
    int rate = 44100;
    int option;
    while ((option = getopt(argc, argv, "b:s:")) != -1) {
        if (option == 'b')
            kbps = std::atoi(optarg);
        else if (option == 's')
            rate = std::atoi(optarg);
        else
            return usage();
    }
    if (optind != argc - 1)
        return usage();
    if (shine_check_config(rate, kbps) < 0) {
        std::fprintf(stderr, "shine: %d kbit/s at %d Hz is not supported\n", kbps, rate);
        return 2;
    }
    const char *path = argv[optind];
    const UniqueFd file(open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (!file.isValid()) {
        std::fprintf(stderr, "shine: cannot write %s: %s\n", path, std::strerror(errno));
        return 1;
    }

    shine_config_t config = {};
    shine_set_config_mpeg_defaults(&config.mpeg);
    config.wave.channels = PCM_MONO;
    config.wave.samplerate = rate;
    config.mpeg.mode = MONO;
    config.mpeg.bitr = kbps;
    const Encoder encoder(shine_initialise(&config));
    if (!encoder)
        return 1;

    AudioSource::stopOnTermination();

    AudioSource source(rate);
    std::vector<int16_t> frame(size_t(shine_samples_per_pass(encoder.get())));
    while (!AudioSource::stopRequested()) {
        if (!source.read(frame.data(), int(frame.size())))
            return 1;
        int16_t *channels[1] = {frame.data()};
        int written = 0;
        const unsigned char *data = shine_encode_buffer(encoder.get(), channels, &written);
        // each frame goes to the file at once, so a killed recording is still playable
        if (!file.writeAll(data, size_t(written)))
            return 1; // the card is full: end, as the device's encoder does
    }
    int written = 0;
    const unsigned char *rest = shine_flush(encoder.get(), &written);
    return file.writeAll(rest, size_t(written)) ? 0 : 1;
}
