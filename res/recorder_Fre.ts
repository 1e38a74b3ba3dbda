<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr_FR">
<context>
    <name>MessageDialog</name>
    <message>
        <source>Dialog</source>
        <translation>Boîte de dialogue</translation>
    </message>
</context>
<context>
    <name>MyEdit</name>
    <message>
        <source>The file is too big, please create new file!</source>
        <translation>Le fichier est trop grand, veuillez créer un nouveau fichier !</translation>
    </message>
</context>
<context>
    <name>PlayerWndAdapter</name>
    <message>
        <source>No music</source>
        <translation>Aucune musique</translation>
    </message>
</context>
<context>
    <name>RecordMainWnd</name>
    <message>
        <source>No enough disk space.</source>
        <translation>Espace de stockage insuffisant.</translation>
    </message>
    <message>
        <source>Exceed the maximum file number, please remove some files.</source>
        <translation>Nombre maximal de fichiers atteint. Supprimez des fichiers.</translation>
    </message>
    <message>
        <source>Do you want to save recording?</source>
        <translation>Garder l&apos;enregistrement ?</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Oui</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Non</translation>
    </message>
    <message>
        <source>Recording</source>
        <translation>Enregistrement</translation>
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
        <translation>sauvegardé dans la bibliothèque</translation>
    </message>
    <message>
        <source>Press OK to Pause</source>
        <translation>OK pour suspendre</translation>
    </message>
    <message>
        <source>Press OK to Play</source>
        <translation>OK pour lire</translation>
    </message>
    <message>
        <source>Press OK to Continue</source>
        <translation>OK pour reprendre</translation>
    </message>
    <message>
        <source>Press OK to Record</source>
        <translation>OK pour enregistrer</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Volume</translation>
    </message>
    <message>
        <source>File Format</source>
        <translation>Format</translation>
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
        <translation>Qualité</translation>
    </message>
    <message>
        <source>High</source>
        <translation>Haute</translation>
    </message>
    <message>
        <source>Mid </source>
        <translation>Moy. </translation>
    </message>
    <message>
        <source>Low</source>
        <translation>Basse</translation>
    </message>
</context>
<context>
    <name>SandGlass</name>
    <message>
        <source>Form</source>
        <translation>Formulaire</translation>
    </message>
</context>
<context>
    <name>SpinItems</name>
    <message>
        <source>Form</source>
        <translation>Formulaire</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>No enough storage space, please remove some files.</source>
        <translation>Espace de stockage insuffisant. Supprimez des fichiers.</translation>
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
        <translation>Répétition</translation>
    </message>
    <message>
        <source>Press OK to Pause</source>
        <translation>OK pour suspendre</translation>
    </message>
    <message>
        <source>Press OK to Play</source>
        <translation>OK pour lire</translation>
    </message>
</context>
</TS>
