<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_TW">
<context>
    <name>MessageDialog</name>
    <message>
        <source>Dialog</source>
        <translation>對話方塊</translation>
    </message>
</context>
<context>
    <name>MyEdit</name>
    <message>
        <source>The file is too big, please create new file!</source>
        <translation>檔案太大，請新建檔案！</translation>
    </message>
</context>
<context>
    <name>PlayerWndAdapter</name>
    <message>
        <source>No music</source>
        <translation>沒有音樂</translation>
    </message>
</context>
<context>
    <name>RecordMainWnd</name>
    <message>
        <source>No enough disk space.</source>
        <translation>儲存空間不足。</translation>
    </message>
    <message>
        <source>Exceed the maximum file number, please remove some files.</source>
        <translation>檔案數已達上限，請刪除部分檔案。</translation>
    </message>
    <message>
        <source>Do you want to save recording?</source>
        <translation>是否儲存錄音？</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>是</translation>
    </message>
    <message>
        <source>No</source>
        <translation>否</translation>
    </message>
    <message>
        <source>Recording</source>
        <translation>錄音</translation>
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
        <translation>已存入錄音庫</translation>
    </message>
    <message>
        <source>Press OK to Pause</source>
        <translation>按OK鍵暫停</translation>
    </message>
    <message>
        <source>Press OK to Play</source>
        <translation>按OK鍵播放</translation>
    </message>
    <message>
        <source>Press OK to Continue</source>
        <translation>按OK鍵繼續</translation>
    </message>
    <message>
        <source>Press OK to Record</source>
        <translation>按OK鍵錄音</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>音量</translation>
    </message>
    <message>
        <source>File Format</source>
        <translation>檔案格式</translation>
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
        <translation>錄音品質</translation>
    </message>
    <message>
        <source>High</source>
        <translation>高</translation>
    </message>
    <message>
        <source>Mid </source>
        <translation>中 </translation>
    </message>
    <message>
        <source>Low</source>
        <translation>低</translation>
    </message>
</context>
<context>
    <name>SandGlass</name>
    <message>
        <source>Form</source>
        <translation>表單</translation>
    </message>
</context>
<context>
    <name>SpinItems</name>
    <message>
        <source>Form</source>
        <translation>表單</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>No enough storage space, please remove some files.</source>
        <translation>儲存空間不足，請刪除部分檔案。</translation>
    </message>
</context>
<context>
    <name>playerWnd</name>
    <message>
        <source>Volume</source>
        <translation>音量</translation>
    </message>
    <message>
        <source>Loop Mode</source>
        <translation>循環模式</translation>
    </message>
    <message>
        <source>Press OK to Pause</source>
        <translation>按OK鍵暫停</translation>
    </message>
    <message>
        <source>Press OK to Play</source>
        <translation>按OK鍵播放</translation>
    </message>
</context>
</TS>
