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
</context>
</TS>
