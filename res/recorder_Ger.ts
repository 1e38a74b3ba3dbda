<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
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
        <translation>Die Datei ist zu groß, bitte eine neue Datei anlegen!</translation>
    </message>
</context>
<context>
    <name>PlayerWndAdapter</name>
    <message>
        <source>No music</source>
        <translation>Keine Musik</translation>
    </message>
</context>
<context>
    <name>RecordMainWnd</name>
    <message>
        <source>No enough disk space.</source>
        <translation>Nicht genug Speicherplatz.</translation>
    </message>
    <message>
        <source>Exceed the maximum file number, please remove some files.</source>
        <translation>Maximale Dateianzahl erreicht. Bitte löschen Sie einige Dateien.</translation>
    </message>
    <message>
        <source>Do you want to save recording?</source>
        <translation>Aufnahme speichern?</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Nein</translation>
    </message>
    <message>
        <source>Recording</source>
        <translation>Aufnahme</translation>
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
        <translation>in der Bibliothek gespeichert</translation>
    </message>
    <message>
        <source>Press OK to Pause</source>
        <translation>Mit OK pausieren</translation>
    </message>
    <message>
        <source>Press OK to Play</source>
        <translation>Mit OK abspielen</translation>
    </message>
    <message>
        <source>Press OK to Continue</source>
        <translation>Mit OK fortsetzen</translation>
    </message>
    <message>
        <source>Press OK to Record</source>
        <translation>Mit OK aufnehmen</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Lautstärke</translation>
    </message>
    <message>
        <source>File Format</source>
        <translation>Dateiformat</translation>
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
        <translation>Qualität</translation>
    </message>
    <message>
        <source>High</source>
        <translation>Hoch</translation>
    </message>
    <message>
        <source>Mid </source>
        <translation>Mittel </translation>
    </message>
    <message>
        <source>Low</source>
        <translation>Niedr.</translation>
    </message>
</context>
<context>
    <name>SandGlass</name>
    <message>
        <source>Form</source>
        <translation>Formular</translation>
    </message>
</context>
<context>
    <name>SpinItems</name>
    <message>
        <source>Form</source>
        <translation>Formular</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>No enough storage space, please remove some files.</source>
        <translation>Nicht genug Speicherplatz. Bitte löschen Sie einige Dateien.</translation>
    </message>
</context>
<context>
    <name>playerWnd</name>
    <message>
        <source>Volume</source>
        <translation>Lautstärke</translation>
    </message>
    <message>
        <source>Loop Mode</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Press OK to Pause</source>
        <translation>Mit OK pausieren</translation>
    </message>
    <message>
        <source>Press OK to Play</source>
        <translation>Mit OK abspielen</translation>
    </message>
</context>
</TS>
