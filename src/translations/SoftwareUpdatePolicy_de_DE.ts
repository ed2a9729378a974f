<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_US">
<context>
    <name>SoftwareUpdatePolicy</name>
    <message>
        <source>The list of updates is not signed. No update can be offered!</source>
        <translation>Die Liste der Updates ist nicht signiert. Es kann kein Update angeboten werden!</translation>
    </message>
    <message>
        <source>The list of updates is not what the publisher signed. No update can be offered!</source>
        <translation>Die Liste der Updates ist nicht die, die der Herausgeber signiert hat. Es kann kein Update angeboten werden!</translation>
    </message>
    <message>
        <source>The list of updates is older than one that was seen before. No update can be offered!</source>
        <translation>Die Liste der Updates ist älter als eine, die schon vorlag. Es kann kein Update angeboten werden!</translation>
    </message>
    <message>
        <source>The list of updates was valid until %1, and your clock says %2. No update can be offered!</source>
        <translation>Die Liste der Updates galt bis %1, und Ihre Uhr zeigt %2. Es kann kein Update angeboten werden!</translation>
    </message>
    <message>
        <source>The update cannot be installed: you may not write the folder %1.</source>
        <translation>Das Update kann nicht installiert werden: Sie dürfen den Ordner %1 nicht beschreiben.</translation>
    </message>
    <message>
        <source>The update cannot be installed: others may write the folder %1, too.</source>
        <translation>Das Update kann nicht installiert werden: Auch andere dürfen den Ordner %1 beschreiben.</translation>
    </message>
    <message>
        <source>The update cannot be installed: the program UpdateInstaller is missing in the folder %1.</source>
        <translation>Das Update kann nicht installiert werden: Im Ordner %1 fehlt das Programm UpdateInstaller.</translation>
    </message>
    <message>
        <source>The update cannot be installed: the package does not hold the program %1.</source>
        <translation>Das Update kann nicht installiert werden: Das Paket enthält das Programm %1 nicht.</translation>
    </message>
    <message>
        <source>Error downloading! %1</source>
        <translation>Fehler beim Herunterladen! %1</translation>
    </message>
</context>
</TS>
