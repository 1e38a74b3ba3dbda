<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
<context>
    <name>MessageDialog</name>
    <message>
        <source>Dialog</source>
        <translation>Dialog</translation>
    </message>
</context>
<context>
    <name>MyEdit</name>
    <message>
        <source>The file is too big, please create new file!</source>
        <translation>The file is too big, please create new file!</translation>
    </message>
</context>
<context>
    <name>PlayerWndAdapter</name>
    <message>
        <source>No music</source>
        <translation>No music</translation>
    </message>
</context>
<context>
    <name>RecordMainWnd</name>
    <message>
        <source>No enough disk space.</source>
        <translation>No enough disk space.</translation>
    </message>
    <message>
        <source>Exceed the maximum file number, please remove some files.</source>
        <translation>Exceed the maximum file number, please remove some files.</translation>
    </message>
    <message>
        <source>Do you want to save recording?</source>
        <translation>Do you want to save recording?</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Yes</translation>
    </message>
    <message>
        <source>No</source>
        <translation>No</translation>
    </message>
    <message>
        <source>Recording</source>
        <translation>Recording</translation>
    </message>
    <message>
        <source> [</source>
        <translation> [</translation>
    </message>
    <message>
        <source>] </source>
        <translation>] </translation>
    </message>
    <message>
        <source>save to library</source>
        <translation>save to library</translation>
    </message>
    <message>
        <source>Press OK to Pause</source>
        <translation>Press OK to Pause</translation>
    </message>
    <message>
        <source>Press OK to Play</source>
        <translation>Press OK to Play</translation>
    </message>
    <message>
        <source>Press OK to Continue</source>
        <translation>Press OK to Continue</translation>
    </message>
    <message>
        <source>Press OK to Record</source>
        <translation>Press OK to Record</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Volume</translation>
    </message>
    <message>
        <source>File Format</source>
        <translation>File Format</translation>
    </message>
    <message>
        <source>Mp3</source>
        <translation>MP3</translation>
    </message>
    <message>
        <source>Wav</source>
        <translation>WAV</translation>
    </message>
    <message>
        <source>File Quality</source>
        <translation>File Quality</translation>
    </message>
    <message>
        <source>High</source>
        <translation>High</translation>
    </message>
    <message>
        <source>Mid </source>
        <translation>Mid </translation>
    </message>
    <message>
        <source>Low</source>
        <translation>Low</translation>
    </message>
</context>
<context>
    <name>SandGlass</name>
    <message>
        <source>Form</source>
        <translation>Form</translation>
    </message>
</context>
<context>
    <name>SpinItems</name>
    <message>
        <source>Form</source>
        <translation>Form</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>No enough storage space, please remove some files.</source>
        <translation>No enough storage space, please remove some files.</translation>
    </message>
</context>
<context>
    <name>playerWnd</name>
    <message>
        <source>Volume</source>
        <translation>Volume</translation>
    </message>
    <message>
        <source>Loop Mode</source>
        <translation>Loop Mode</translation>
    </message>
    <message>
        <source>Press OK to Pause</source>
        <translation>Press OK to Pause</translation>
    </message>
    <message>
        <source>Press OK to Play</source>
        <translation>Press OK to Play</translation>
    </message>
</context>
</TS>
