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
    <message>
        <source>The server %1 cannot be reached. Please check your network connection and try again.</source>
        <translation>Der Server %1 ist nicht erreichbar. Bitte prüfen Sie Ihre Netzwerkverbindung und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>The proxy server cannot be reached. Please check the proxy settings and your network connection.</source>
        <translation>Der Proxyserver ist nicht erreichbar. Bitte prüfen Sie die Proxy-Einstellungen und Ihre Netzwerkverbindung.</translation>
    </message>
    <message>
        <source>The proxy server asks for a login. Please check user name and password in the proxy settings.</source>
        <translation>Der Proxyserver verlangt eine Anmeldung. Bitte prüfen Sie Benutzername und Kennwort in den Proxy-Einstellungen.</translation>
    </message>
    <message>
        <source>The certificate of the server %1 was not accepted. Please check the date and time of your computer, and whether your network asks for a login in a web browser.</source>
        <translation>Das Zertifikat des Servers %1 wurde nicht akzeptiert. Bitte prüfen Sie Datum und Uhrzeit Ihres Computers und ob Ihr Netzwerk eine Anmeldung im Webbrowser verlangt.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not the address of a web server. Please correct it, or tell the publisher of the software.</source>
        <translation>„%1“ ist keine Adresse eines Webservers. Bitte korrigieren Sie sie oder wenden Sie sich an den Herausgeber der Software.</translation>
    </message>
    <message>
        <source>The server %1 does not answer. Please check your network connection, or try again later.</source>
        <translation>Der Server %1 antwortet nicht. Bitte prüfen Sie Ihre Netzwerkverbindung oder versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>The transfer from the server %1 failed. Please try again later.</source>
        <translation>Die Übertragung vom Server %1 ist fehlgeschlagen. Bitte versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>The server %1 denies access. Please ask its administrator.</source>
        <translation>Der Server %1 verweigert den Zugriff. Bitte wenden Sie sich an seinen Administrator.</translation>
    </message>
    <message>
        <source>The server %1 does not have what was asked for. It may have been replaced: please check for updates again later.</source>
        <translation>Auf dem Server %1 fehlt, was angefordert wurde. Vielleicht wurde es ersetzt: Bitte suchen Sie später erneut nach Updates.</translation>
    </message>
    <message>
        <source>The server %1 cannot answer at the moment. Please try again later.</source>
        <translation>Der Server %1 kann im Moment nicht antworten. Bitte versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>The server %1 answered with an error (%2). Please try again later.</source>
        <translation>Der Server %1 hat mit einem Fehler geantwortet (%2). Bitte versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>The server %1 answered with a web page. Your network may ask for a login: please open a web browser, log in there, and try again.</source>
        <translation>Der Server %1 hat mit einer Webseite geantwortet. Vielleicht verlangt Ihr Netzwerk eine Anmeldung: Bitte öffnen Sie einen Webbrowser, melden Sie sich dort an und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>The list of updates from the server %1 is empty or cannot be read. Please try again later.</source>
        <translation>Die Liste der Updates vom Server %1 ist leer oder nicht lesbar. Bitte versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>The connection broke off after %1. Please check your network connection and try again.</source>
        <translation>Die Verbindung ist nach %1 abgebrochen. Bitte prüfen Sie Ihre Netzwerkverbindung und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>The connection to the server %1 broke off. Please check your network connection and try again.</source>
        <translation>Die Verbindung zum Server %1 ist abgebrochen. Bitte prüfen Sie Ihre Netzwerkverbindung und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>There is not enough room on the disk: %1 are needed in %2. Please make room and try again.</source>
        <translation>Auf dem Datenträger ist nicht genug Platz: %1 werden in %2 benötigt. Bitte schaffen Sie Platz und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>The disk is full: there is no room left in %1. Please make room and try again.</source>
        <translation>Der Datenträger ist voll: In %1 ist kein Platz mehr. Bitte schaffen Sie Platz und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>The package cannot be saved in %1. Please check that you may write there, and that the disk has room.</source>
        <translation>Das Paket kann in %1 nicht gespeichert werden. Bitte prüfen Sie, ob Sie dort schreiben dürfen und ob der Datenträger Platz hat.</translation>
    </message>
    <message>
        <source>The package arrived damaged and was not installed. Please try again; if that does not help, tell the publisher of the software.</source>
        <translation>Das Paket ist beschädigt angekommen und wurde nicht installiert. Bitte versuchen Sie es erneut; wenn das nicht hilft, wenden Sie sich an den Herausgeber der Software.</translation>
    </message>
    <message>
        <source>The installer could not be started. It lies in %1: please start it from there yourself.</source>
        <translation>Das Installationsprogramm konnte nicht gestartet werden. Es liegt in %1: Bitte starten Sie es von dort selbst.</translation>
    </message>
    <message>
        <source>The package holds no installer that can be started. Please tell the publisher of the software.</source>
        <translation>Das Paket enthält kein Installationsprogramm, das gestartet werden kann. Bitte wenden Sie sich an den Herausgeber der Software.</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>less than a minute left</source>
        <translation>noch weniger als eine Minute</translation>
    </message>
    <message>
        <source>about a minute left</source>
        <translation>noch etwa eine Minute</translation>
    </message>
    <message>
        <source>about %1 minutes left</source>
        <translation>noch etwa %1 Minuten</translation>
    </message>
    <message>
        <source>about an hour left</source>
        <translation>noch etwa eine Stunde</translation>
    </message>
    <message>
        <source>about %1 hours left</source>
        <translation>noch etwa %1 Stunden</translation>
    </message>
    <message>
        <source>more than a day left</source>
        <translation>noch mehr als einen Tag</translation>
    </message>
    <message>
        <source>Asking the camera...</source>
        <translation>Die Kamera wird gefragt ...</translation>
    </message>
    <message>
        <source>Sending the firmware...</source>
        <translation>Die Firmware wird gesendet ...</translation>
    </message>
    <message>
        <source>The camera installs the firmware and restarts. Do not switch it off!</source>
        <translation>Die Kamera installiert die Firmware und startet neu. Schalten Sie sie nicht aus!</translation>
    </message>
    <message>
        <source>Version %1 is installed.</source>
        <translation>Version %1 ist installiert.</translation>
    </message>
    <message>
        <source>Version %1 is already there.</source>
        <translation>Version %1 ist bereits vorhanden.</translation>
    </message>
    <message>
        <source>Cancelled before the camera had the firmware.</source>
        <translation>Abgebrochen, bevor die Kamera die Firmware hatte.</translation>
    </message>
    <message>
        <source>The camera cannot be reached: %1</source>
        <translation>Die Kamera ist nicht erreichbar: %1</translation>
    </message>
    <message>
        <source>The camera does not accept the user name and the password.</source>
        <translation>Die Kamera nimmt Benutzernamen und Passwort nicht an.</translation>
    </message>
    <message>
        <source>The certificate is not that of the camera. No password was sent.</source>
        <translation>Das Zertifikat ist nicht das der Kamera. Es wurde kein Passwort gesendet.</translation>
    </message>
    <message>
        <source>The camera&apos;s answer cannot be understood.</source>
        <translation>Die Antwort der Kamera ist nicht verständlich.</translation>
    </message>
    <message>
        <source>The camera reports: %1</source>
        <translation>Die Kamera meldet: %1</translation>
    </message>
    <message>
        <source>The camera cannot be updated this way.</source>
        <translation>Die Kamera kann auf diesem Weg nicht aktualisiert werden.</translation>
    </message>
    <message>
        <source>The camera does not say where the firmware is to go.</source>
        <translation>Die Kamera sagt nicht, wohin die Firmware gesendet werden soll.</translation>
    </message>
    <message>
        <source>The firmware cannot be read: %1</source>
        <translation>Die Firmware kann nicht gelesen werden: %1</translation>
    </message>
    <message>
        <source>The camera refuses the file: it is no firmware for this camera.</source>
        <translation>Die Kamera weist die Datei ab: Sie ist keine Firmware für diese Kamera.</translation>
    </message>
    <message>
        <source>The firmware could not be sent: %1</source>
        <translation>Die Firmware konnte nicht gesendet werden: %1</translation>
    </message>
    <message>
        <source>After the update the camera runs version %1, not the new one.</source>
        <translation>Nach dem Update läuft auf der Kamera Version %1, nicht die neue.</translation>
    </message>
    <message>
        <source>The camera has not come back after the update.</source>
        <translation>Die Kamera hat sich nach dem Update nicht zurückgemeldet.</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>It does not answer in time.</source>
        <translation>Sie antwortet nicht rechtzeitig.</translation>
    </message>
    <message>
        <source>No camera needs this firmware.</source>
        <translation>Keine Kamera braucht diese Firmware.</translation>
    </message>
    <message>
        <source>This package is no firmware for cameras.</source>
        <translation>Dieses Paket ist keine Firmware für Kameras.</translation>
    </message>
</context>
</TS>
