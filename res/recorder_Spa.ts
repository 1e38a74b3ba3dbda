<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es_ES">
<context>
    <name>MessageDialog</name>
    <message>
        <source>Dialog</source>
        <translation>Diálogo</translation>
    </message>
</context>
<context>
    <name>MyEdit</name>
    <message>
        <source>The file is too big, please create new file!</source>
        <translation>¡El archivo es demasiado grande, cree un archivo nuevo!</translation>
    </message>
</context>
<context>
    <name>PlayerWndAdapter</name>
    <message>
        <source>No music</source>
        <translation>No hay música</translation>
    </message>
</context>
<context>
    <name>RecordMainWnd</name>
    <message>
        <source>No enough disk space.</source>
        <translation>Espacio insuficiente.</translation>
    </message>
    <message>
        <source>Exceed the maximum file number, please remove some files.</source>
        <translation>Se ha alcanzado el número máximo de archivos. Elimine algunos archivos.</translation>
    </message>
    <message>
        <source>Do you want to save recording?</source>
        <translation>¿Guardar la grabación?</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Sí</translation>
    </message>
    <message>
        <source>No</source>
        <translation>No</translation>
    </message>
    <message>
        <source>Recording</source>
        <translation>Grabación</translation>
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
        <translation>guardada en la biblioteca</translation>
    </message>
    <message>
        <source>Press OK to Pause</source>
        <translation>OK para pausar</translation>
    </message>
    <message>
        <source>Press OK to Play</source>
        <translation>OK para reproducir</translation>
    </message>
    <message>
        <source>Press OK to Continue</source>
        <translation>OK para continuar</translation>
    </message>
    <message>
        <source>Press OK to Record</source>
        <translation>OK para grabar</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Volumen</translation>
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
        <translation>Calidad</translation>
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
        <translation>Baja</translation>
    </message>
</context>
<context>
    <name>SandGlass</name>
    <message>
        <source>Form</source>
        <translation>Formulario</translation>
    </message>
</context>
<context>
    <name>SpinItems</name>
    <message>
        <source>Form</source>
        <translation>Formulario</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>No enough storage space, please remove some files.</source>
        <translation>Espacio insuficiente. Elimine algunos archivos.</translation>
    </message>
</context>
<context>
    <name>playerWnd</name>
    <message>
        <source>Volume</source>
        <translation>Volumen</translation>
    </message>
    <message>
        <source>Loop Mode</source>
        <translation>Repetición</translation>
    </message>
    <message>
        <source>Press OK to Pause</source>
        <translation>OK para pausar</translation>
    </message>
    <message>
        <source>Press OK to Play</source>
        <translation>OK para reproducir</translation>
    </message>
</context>
</TS>
