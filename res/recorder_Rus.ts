<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru_RU">
<context>
    <name>MessageDialog</name>
    <message>
        <source>Dialog</source>
        <translation>Диалог</translation>
    </message>
</context>
<context>
    <name>MyEdit</name>
    <message>
        <source>The file is too big, please create new file!</source>
        <translation>Файл слишком большой, создайте новый файл!</translation>
    </message>
</context>
<context>
    <name>PlayerWndAdapter</name>
    <message>
        <source>No music</source>
        <translation>Нет музыки</translation>
    </message>
</context>
<context>
    <name>RecordMainWnd</name>
    <message>
        <source>No enough disk space.</source>
        <translation>Недостаточно места.</translation>
    </message>
    <message>
        <source>Exceed the maximum file number, please remove some files.</source>
        <translation>Достигнуто максимальное число файлов. Удалите часть файлов.</translation>
    </message>
    <message>
        <source>Do you want to save recording?</source>
        <translation>Сохранить запись?</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Да</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Нет</translation>
    </message>
    <message>
        <source>Recording</source>
        <translation>Запись</translation>
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
        <translation>сохранена в библиотеке</translation>
    </message>
    <message>
        <source>Press OK to Pause</source>
        <translation>OK – пауза</translation>
    </message>
    <message>
        <source>Press OK to Play</source>
        <translation>OK – воспроизвести</translation>
    </message>
    <message>
        <source>Press OK to Continue</source>
        <translation>OK – продолжить</translation>
    </message>
    <message>
        <source>Press OK to Record</source>
        <translation>OK – запись</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Громкость</translation>
    </message>
    <message>
        <source>File Format</source>
        <translation>Формат</translation>
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
        <translation>Качество</translation>
    </message>
    <message>
        <source>High</source>
        <translation>Выс.</translation>
    </message>
    <message>
        <source>Mid </source>
        <translation>Сред. </translation>
    </message>
    <message>
        <source>Low</source>
        <translation>Низк.</translation>
    </message>
</context>
<context>
    <name>SandGlass</name>
    <message>
        <source>Form</source>
        <translation>Форма</translation>
    </message>
</context>
<context>
    <name>SpinItems</name>
    <message>
        <source>Form</source>
        <translation>Форма</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>No enough storage space, please remove some files.</source>
        <translation>Недостаточно места. Удалите часть файлов.</translation>
    </message>
</context>
<context>
    <name>playerWnd</name>
    <message>
        <source>Volume</source>
        <translation>Громкость</translation>
    </message>
    <message>
        <source>Loop Mode</source>
        <translation>Повтор</translation>
    </message>
    <message>
        <source>Press OK to Pause</source>
        <translation>OK – пауза</translation>
    </message>
    <message>
        <source>Press OK to Play</source>
        <translation>OK – слушать</translation>
    </message>
</context>
</TS>
