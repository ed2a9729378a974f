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
    <message>
        <source>The package will be downloaded and installed. Your application goes on running.

%1</source>
        <translation>Das Paket wird heruntergeladen und installiert. Ihre Anwendung läuft weiter.

%1</translation>
    </message>
    <message>
        <source>%1 packages will be downloaded and installed one after the other. Your application goes on running.</source>
        <translation>%1 Pakete werden nacheinander heruntergeladen und installiert. Ihre Anwendung läuft weiter.</translation>
    </message>
    <message>
        <source>%1 of %2: %3</source>
        <translation>%1 von %2: %3</translation>
    </message>
    <message>
        <source>Installing package...</source>
        <translation>Paket wird installiert...</translation>
    </message>
    <message>
        <source>The installation is being cancelled...</source>
        <translation>Die Installation wird abgebrochen...</translation>
    </message>
    <message>
        <source>%1 has been installed.</source>
        <translation>%1 wurde installiert.</translation>
    </message>
    <message>
        <source>%1 could not be installed.</source>
        <translation>%1 konnte nicht installiert werden.</translation>
    </message>
    <message>
        <source>Packages installed: %1 of %2</source>
        <translation>Installierte Pakete: %1 von %2</translation>
    </message>
    <message>
        <source>%1: installed.</source>
        <translation>%1: installiert.</translation>
    </message>
    <message>
        <source>%1: not installed.</source>
        <translation>%1: nicht installiert.</translation>
    </message>
    <message>
        <source>%1: cancelled.</source>
        <translation>%1: abgebrochen.</translation>
    </message>
    <message>
        <source>The installer is busy with another package.</source>
        <translation>Das Installationsprogramm ist noch mit einem anderen Paket beschäftigt.</translation>
    </message>
    <message>
        <source>The installer does not respond.</source>
        <translation>Das Installationsprogramm antwortet nicht.</translation>
    </message>
    <message>
        <source>The installer has ended unexpectedly.</source>
        <translation>Das Installationsprogramm wurde unerwartet beendet.</translation>
    </message>
</context>
</TS>
