<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr_FR" sourcelanguage="en_US">
<context>
    <name>SoftwareUpdatePolicy</name>
    <message>
        <source>The list of updates is not signed. No update can be offered!</source>
        <translation>La liste des mises à jour n&apos;est pas signée. Aucune mise à jour ne peut être proposée !</translation>
    </message>
    <message>
        <source>The list of updates is not what the publisher signed. No update can be offered!</source>
        <translation>La liste des mises à jour n&apos;est pas celle que l&apos;éditeur a signée. Aucune mise à jour ne peut être proposée !</translation>
    </message>
    <message>
        <source>The list of updates is older than one that was seen before. No update can be offered!</source>
        <translation>La liste des mises à jour est plus ancienne qu&apos;une autre déjà reçue. Aucune mise à jour ne peut être proposée !</translation>
    </message>
    <message>
        <source>The list of updates was valid until %1, and your clock says %2. No update can be offered!</source>
        <translation>La liste des mises à jour était valable jusqu&apos;au %1, et votre horloge indique %2. Aucune mise à jour ne peut être proposée !</translation>
    </message>
    <message>
        <source>The update cannot be installed: you may not write the folder %1.</source>
        <translation>La mise à jour ne peut pas être installée : vous n&apos;avez pas le droit d&apos;écrire dans le dossier %1.</translation>
    </message>
    <message>
        <source>The update cannot be installed: others may write the folder %1, too.</source>
        <translation>La mise à jour ne peut pas être installée : d&apos;autres ont aussi le droit d&apos;écrire dans le dossier %1.</translation>
    </message>
    <message>
        <source>The update cannot be installed: the program UpdateInstaller is missing in the folder %1.</source>
        <translation>La mise à jour ne peut pas être installée : le programme UpdateInstaller manque dans le dossier %1.</translation>
    </message>
    <message>
        <source>The update cannot be installed: the package does not hold the program %1.</source>
        <translation>La mise à jour ne peut pas être installée : le paquet ne contient pas le programme %1.</translation>
    </message>
    <message>
        <source>Error downloading! %1</source>
        <translation>Erreur de téléchargement ! %1</translation>
    </message>
    <message>
        <source>The package will be downloaded and installed. Your application goes on running.

%1</source>
        <translation>Le paquet sera téléchargé et installé. Votre application continue de fonctionner.

%1</translation>
    </message>
    <message>
        <source>%1 packages will be downloaded and installed one after the other. Your application goes on running.</source>
        <translation>%1 paquets seront téléchargés et installés l&apos;un après l&apos;autre. Votre application continue de fonctionner.</translation>
    </message>
    <message>
        <source>%1 of %2: %3</source>
        <translation>%1 sur %2 : %3</translation>
    </message>
    <message>
        <source>Installing package...</source>
        <translation>Installation du paquet...</translation>
    </message>
    <message>
        <source>The installation is being cancelled...</source>
        <translation>Annulation de l&apos;installation...</translation>
    </message>
    <message>
        <source>%1 has been installed.</source>
        <translation>%1 a été installé.</translation>
    </message>
    <message>
        <source>%1 could not be installed.</source>
        <translation>%1 n&apos;a pas pu être installé.</translation>
    </message>
    <message>
        <source>Packages installed: %1 of %2</source>
        <translation>Paquets installés : %1 sur %2</translation>
    </message>
    <message>
        <source>%1: installed.</source>
        <translation>%1 : installé.</translation>
    </message>
    <message>
        <source>%1: not installed.</source>
        <translation>%1 : non installé.</translation>
    </message>
    <message>
        <source>%1: cancelled.</source>
        <translation>%1 : annulé.</translation>
    </message>
    <message>
        <source>The installer is busy with another package.</source>
        <translation>Le programme d&apos;installation est occupé par un autre paquet.</translation>
    </message>
    <message>
        <source>The installer does not respond.</source>
        <translation>Le programme d&apos;installation ne répond pas.</translation>
    </message>
    <message>
        <source>The installer has ended unexpectedly.</source>
        <translation>Le programme d&apos;installation s&apos;est arrêté de façon inattendue.</translation>
    </message>
</context>
</TS>
