#pragma once

#include <atomic>

class QString;

// States of the recording state word bRecPause.
enum {
    RECSOUND_PAUSED = 6,   // the encoder is held with SIGSTOP
    RECSOUND_CONTINUE = 7, // the encoder is resumed with SIGCONT
    RECSOUND_STOPPED = 8,  // idle; the engine writes this when it ends
    RECSOUND_RECING = 9    // recording; the encoder is left alone
};

// Shared between the recorder window (GUI thread) and the recording worker; the worker reads
// them every 100 ms, so a change takes effect within that time.
extern std::atomic<bool> bRecording;         // cleared by the window to stop a recording
extern std::atomic<int> bRecPause;           // one of RECSOUND_*; initially RECSOUND_STOPPED
extern std::atomic<bool> isRecord2Mp3;       // MP3 with shine, otherwise WAV with record2wav
extern std::atomic<const char *> bitrate;    // MP3 bit rate in kbit/s: "128", "96" or "64"
extern std::atomic<const char *> samplerate; // WAV sample rate in Hz: "44100", "22050", "11025"
extern std::atomic<bool> g_setRecoderVolume; // the microphone gain has been set in this process

// Sets bitrate and samplerate from the file quality (0 high, 1 middle, 2 low) and returns the
// sample-rate text; any other quality leaves both as they were.
const char *setBitRate(int quality);

// Runs one recording into fileName until *recording turns false or the encoder ends, pausing
// and resuming the encoder as *state says. Resets *state to RECSOUND_STOPPED and *recording to
// false at the end. Returns 0 when stopped through *recording, 1 when the encoder ended by itself
// (or could not be started), -1 for a null fileName or recording.
int RecordToFile(const char *fileName, std::atomic<bool> *recording, std::atomic<int> *state,
                 const char *bitrate, bool mp3);

// Body of the recording worker thread: fileName is a strdup() copy of the path, freed here.
void *Record_Thread(void *fileName);

// Starts a detached Record_Thread on a copy of path (in the file system's encoding). The caller
// sets bRecording true and bRecPause to RECSOUND_RECING first. Returns 0, or -1 when no thread
// could be started.
int startRecordThread(const QString &path);

// Blocks until no engine started by startRecordThread is running any more (its encoder reaped,
// the state words written), or until timeoutMs has passed; true when none is running. The next
// recording must not start before this: the ending engine resets the shared state words.
bool waitForEngine(int timeoutMs);
