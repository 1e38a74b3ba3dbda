#pragma once

// The device audio library's microphone recording mode. On the pen it selects the codec's input
// path; here the mode is only kept, so that a test can see it was chosen before any recording.
int Set_mic_record_mode(int mode);
int micRecordMode();
