<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="it_IT">
<context>
    <name>MessageDialog</name>
    <message>
        <source>Dialog</source>
        <translation>Finestra di dialogo</translation>
    </message>
</context>
<context>
    <name>MyEdit</name>
    <message>
        <source>The file is too big, please create new file!</source>
        <translation>Il file è troppo grande, creare un nuovo file!</translation>
    </message>
</context>
<context>
    <name>PlayerWndAdapter</name>
    <message>
        <source>No music</source>
        <translation>Nessuna musica</translation>
    </message>
</context>
<context>
    <name>RecordMainWnd</name>
    <message>
        <source>No enough disk space.</source>
        <translation>Spazio insufficiente.</translation>
    </message>
    <message>
        <source>Exceed the maximum file number, please remove some files.</source>
        <translation>Numero massimo di file raggiunto. Eliminare alcuni file.</translation>
    </message>
    <message>
        <source>Do you want to save recording?</source>
        <translation>Salvare la registrazione?</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Sì</translation>
    </message>
    <message>
        <source>No</source>
        <translation>No</translation>
    </message>
    <message>
        <source>Recording</source>
        <translation>Registrazione</translation>
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
        <translation>salvata nella libreria</translation>
    </message>
    <message>
        <source>Press OK to Pause</source>
        <translation>OK per sospendere</translation>
    </message>
    <message>
        <source>Press OK to Play</source>
        <translation>OK per riprodurre</translation>
    </message>
    <message>
        <source>Press OK to Continue</source>
        <translation>OK per riprendere</translation>
    </message>
    <message>
        <source>Press OK to Record</source>
        <translation>OK per registrare</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Volume</translation>
    </message>
    <message>
        <source>File Format</source>
        <translation>Formato</translation>
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
        <translation>Qualità</translation>
    </message>
    <message>
        <source>High</source>
        <translation>Alta</translation>
    </message>
    <message>
        <source>Mid </source>
        <translation>Media </translation>
    </message>
    <message>
        <source>Low</source>
        <translation>Bassa</translation>
    </message>
</context>
<context>
    <name>SandGlass</name>
    <message>
        <source>Form</source>
        <translation>Modulo</translation>
    </message>
</context>
<context>
    <name>SpinItems</name>
    <message>
        <source>Form</source>
        <translation>Modulo</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>No enough storage space, please remove some files.</source>
        <translation>Spazio insufficiente. Eliminare alcuni file.</translation>
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
        <translation>Ripetizione</translation>
    </message>
    <message>
        <source>Press OK to Pause</source>
        <translation>OK per sospendere</translation>
    </message>
    <message>
        <source>Press OK to Play</source>
        <translation>OK per riprodurre</translation>
    </message>
</context>
</TS>
