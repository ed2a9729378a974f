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
        <source>Error downloading! %1</source>
        <translation>Fehler beim Herunterladen! %1</translation>
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
