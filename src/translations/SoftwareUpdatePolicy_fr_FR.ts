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
        <source>Error downloading! %1</source>
        <translation>Erreur de téléchargement ! %1</translation>
    </message>
    <message>
        <source>Asking the camera...</source>
        <translation>Interrogation de la caméra...</translation>
    </message>
    <message>
        <source>Sending the firmware...</source>
        <translation>Envoi du micrologiciel...</translation>
    </message>
    <message>
        <source>The camera installs the firmware and restarts. Do not switch it off!</source>
        <translation>La caméra installe le micrologiciel et redémarre. Ne l&apos;éteignez pas !</translation>
    </message>
    <message>
        <source>Version %1 is installed.</source>
        <translation>La version %1 est installée.</translation>
    </message>
    <message>
        <source>Version %1 is already there.</source>
        <translation>La version %1 est déjà en place.</translation>
    </message>
    <message>
        <source>Cancelled before the camera had the firmware.</source>
        <translation>Annulé avant que la caméra n&apos;ait reçu le micrologiciel.</translation>
    </message>
    <message>
        <source>The camera cannot be reached: %1</source>
        <translation>La caméra est injoignable : %1</translation>
    </message>
    <message>
        <source>The camera does not accept the user name and the password.</source>
        <translation>La caméra n&apos;accepte pas le nom d&apos;utilisateur et le mot de passe.</translation>
    </message>
    <message>
        <source>The certificate is not that of the camera. No password was sent.</source>
        <translation>Le certificat n&apos;est pas celui de la caméra. Aucun mot de passe n&apos;a été envoyé.</translation>
    </message>
    <message>
        <source>The camera&apos;s answer cannot be understood.</source>
        <translation>La réponse de la caméra est incompréhensible.</translation>
    </message>
    <message>
        <source>The camera reports: %1</source>
        <translation>La caméra signale : %1</translation>
    </message>
    <message>
        <source>The camera cannot be updated this way.</source>
        <translation>La caméra ne peut pas être mise à jour de cette façon.</translation>
    </message>
    <message>
        <source>The camera does not say where the firmware is to go.</source>
        <translation>La caméra n&apos;indique pas où envoyer le micrologiciel.</translation>
    </message>
    <message>
        <source>The firmware cannot be read: %1</source>
        <translation>Impossible de lire le micrologiciel : %1</translation>
    </message>
    <message>
        <source>The camera refuses the file: it is no firmware for this camera.</source>
        <translation>La caméra refuse le fichier : ce n&apos;est pas un micrologiciel pour cette caméra.</translation>
    </message>
    <message>
        <source>The firmware could not be sent: %1</source>
        <translation>Le micrologiciel n&apos;a pas pu être envoyé : %1</translation>
    </message>
    <message>
        <source>After the update the camera runs version %1, not the new one.</source>
        <translation>Après la mise à jour, la caméra exécute la version %1 et non la nouvelle.</translation>
    </message>
    <message>
        <source>The camera has not come back after the update.</source>
        <translation>La caméra ne s&apos;est pas manifestée après la mise à jour.</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1 : %2</translation>
    </message>
    <message>
        <source>It does not answer in time.</source>
        <translation>Elle ne répond pas à temps.</translation>
    </message>
    <message>
        <source>No camera needs this firmware.</source>
        <translation>Aucune caméra n&apos;a besoin de ce micrologiciel.</translation>
    </message>
    <message>
        <source>This package is no firmware for cameras.</source>
        <translation>Ce paquet n&apos;est pas un micrologiciel pour caméras.</translation>
    </message>
</context>
</TS>
