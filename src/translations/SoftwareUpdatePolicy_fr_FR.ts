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
        <translation>La mise à jour ne peut pas être installée : vous n&apos;avez pas le droit d&apos;écrire dans le dossier %1.</translation>
    </message>
    <message>
        <source>The update cannot be installed: others may write the folder %1, too.</source>
        <translation>La mise à jour ne peut pas être installée : d&apos;autres ont aussi le droit d&apos;écrire dans le dossier %1.</translation>
    </message>
    <message>
        <source>The update cannot be installed: the program UpdateInstaller is missing in the folder %1.</source>
        <translation>La mise à jour ne peut pas être installée : le programme UpdateInstaller manque dans le dossier %1.</translation>
    </message>
    <message>
        <source>The update cannot be installed: the package does not hold the program %1.</source>
        <translation>La mise à jour ne peut pas être installée : le paquet ne contient pas le programme %1.</translation>
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
        <translation>%1 sur %2 : %3</translation>
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
        <translation>Paquets installés : %1 sur %2</translation>
    </message>
    <message>
        <source>%1: installed.</source>
        <translation>%1 : installé.</translation>
    </message>
    <message>
        <source>%1: not installed.</source>
        <translation>%1 : non installé.</translation>
    </message>
    <message>
        <source>%1: cancelled.</source>
        <translation>%1 : annulé.</translation>
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
    <message>
        <source>The server %1 cannot be reached. Please check your network connection and try again.</source>
        <translation>Le serveur %1 est injoignable. Veuillez vérifier votre connexion réseau et réessayer.</translation>
    </message>
    <message>
        <source>The proxy server cannot be reached. Please check the proxy settings and your network connection.</source>
        <translation>Le serveur proxy est injoignable. Veuillez vérifier les paramètres du proxy et votre connexion réseau.</translation>
    </message>
    <message>
        <source>The proxy server asks for a login. Please check user name and password in the proxy settings.</source>
        <translation>Le serveur proxy demande une authentification. Veuillez vérifier le nom d&apos;utilisateur et le mot de passe dans les paramètres du proxy.</translation>
    </message>
    <message>
        <source>The certificate of the server %1 was not accepted. Please check the date and time of your computer, and whether your network asks for a login in a web browser.</source>
        <translation>Le certificat du serveur %1 n&apos;a pas été accepté. Veuillez vérifier la date et l&apos;heure de votre ordinateur, et si votre réseau demande une connexion dans un navigateur web.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not the address of a web server. Please correct it, or tell the publisher of the software.</source>
        <translation>« %1 » n&apos;est pas l&apos;adresse d&apos;un serveur web. Veuillez la corriger ou prévenir l&apos;éditeur du logiciel.</translation>
    </message>
    <message>
        <source>The server %1 does not answer. Please check your network connection, or try again later.</source>
        <translation>Le serveur %1 ne répond pas. Veuillez vérifier votre connexion réseau ou réessayer plus tard.</translation>
    </message>
    <message>
        <source>The transfer from the server %1 failed. Please try again later.</source>
        <translation>Le transfert depuis le serveur %1 a échoué. Veuillez réessayer plus tard.</translation>
    </message>
    <message>
        <source>The server %1 denies access. Please ask its administrator.</source>
        <translation>Le serveur %1 refuse l&apos;accès. Veuillez vous adresser à son administrateur.</translation>
    </message>
    <message>
        <source>The server %1 does not have what was asked for. It may have been replaced: please check for updates again later.</source>
        <translation>Le serveur %1 n&apos;a pas ce qui lui a été demandé. Cela a peut-être été remplacé : veuillez rechercher à nouveau des mises à jour plus tard.</translation>
    </message>
    <message>
        <source>The server %1 cannot answer at the moment. Please try again later.</source>
        <translation>Le serveur %1 ne peut pas répondre pour le moment. Veuillez réessayer plus tard.</translation>
    </message>
    <message>
        <source>The server %1 answered with an error (%2). Please try again later.</source>
        <translation>Le serveur %1 a répondu par une erreur (%2). Veuillez réessayer plus tard.</translation>
    </message>
    <message>
        <source>The server %1 answered with a web page. Your network may ask for a login: please open a web browser, log in there, and try again.</source>
        <translation>Le serveur %1 a répondu par une page web. Votre réseau demande peut-être une connexion : veuillez ouvrir un navigateur web, vous y connecter et réessayer.</translation>
    </message>
    <message>
        <source>The list of updates from the server %1 is empty or cannot be read. Please try again later.</source>
        <translation>La liste des mises à jour du serveur %1 est vide ou illisible. Veuillez réessayer plus tard.</translation>
    </message>
    <message>
        <source>The connection broke off after %1. Please check your network connection and try again.</source>
        <translation>La connexion a été interrompue après %1. Veuillez vérifier votre connexion réseau et réessayer.</translation>
    </message>
    <message>
        <source>The connection to the server %1 broke off. Please check your network connection and try again.</source>
        <translation>La connexion au serveur %1 a été interrompue. Veuillez vérifier votre connexion réseau et réessayer.</translation>
    </message>
    <message>
        <source>There is not enough room on the disk: %1 are needed in %2. Please make room and try again.</source>
        <translation>L&apos;espace disque est insuffisant : il faut %1 dans %2. Veuillez libérer de l&apos;espace et réessayer.</translation>
    </message>
    <message>
        <source>The disk is full: there is no room left in %1. Please make room and try again.</source>
        <translation>Le disque est plein : il n&apos;y a plus de place dans %1. Veuillez libérer de l&apos;espace et réessayer.</translation>
    </message>
    <message>
        <source>The package cannot be saved in %1. Please check that you may write there, and that the disk has room.</source>
        <translation>Le paquet ne peut pas être enregistré dans %1. Veuillez vérifier que vous avez le droit d&apos;y écrire et qu&apos;il reste de la place sur le disque.</translation>
    </message>
    <message>
        <source>The package arrived damaged and was not installed. Please try again; if that does not help, tell the publisher of the software.</source>
        <translation>Le paquet est arrivé endommagé et n&apos;a pas été installé. Veuillez réessayer ; si cela ne suffit pas, prévenez l&apos;éditeur du logiciel.</translation>
    </message>
    <message>
        <source>The installer could not be started. It lies in %1: please start it from there yourself.</source>
        <translation>Le programme d&apos;installation n&apos;a pas pu être lancé. Il se trouve dans %1 : veuillez le lancer vous-même depuis ce dossier.</translation>
    </message>
    <message>
        <source>The package holds no installer that can be started. Please tell the publisher of the software.</source>
        <translation>Le paquet ne contient aucun programme d&apos;installation qui puisse être lancé. Veuillez prévenir l&apos;éditeur du logiciel.</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 sur %2</translation>
    </message>
    <message>
        <source>less than a minute left</source>
        <translation>moins d&apos;une minute restante</translation>
    </message>
    <message>
        <source>about a minute left</source>
        <translation>environ une minute restante</translation>
    </message>
    <message>
        <source>about %1 minutes left</source>
        <translation>environ %1 minutes restantes</translation>
    </message>
    <message>
        <source>about an hour left</source>
        <translation>environ une heure restante</translation>
    </message>
    <message>
        <source>about %1 hours left</source>
        <translation>environ %1 heures restantes</translation>
    </message>
    <message>
        <source>more than a day left</source>
        <translation>plus d&apos;un jour restant</translation>
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
        <translation>La caméra installe le micrologiciel et redémarre. Ne l&apos;éteignez pas !</translation>
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
        <translation>La caméra est injoignable : %1</translation>
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
        <translation>La caméra signale : %1</translation>
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
        <translation>Impossible de lire le micrologiciel : %1</translation>
    </message>
    <message>
        <source>The camera refuses the file: it is no firmware for this camera.</source>
        <translation>La caméra refuse le fichier : ce n&apos;est pas un micrologiciel pour cette caméra.</translation>
    </message>
    <message>
        <source>The firmware could not be sent: %1</source>
        <translation>Le micrologiciel n&apos;a pas pu être envoyé : %1</translation>
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
        <translation>%1 : %2</translation>
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
