<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_US">
<context>
    <name>DownloadManager</name>
    <message>
        <source>Downloaded file could not be unpacked:&lt;br&gt;</source>
        <translation>Die heruntergeladene Datei konnte nicht entpackt werden:&lt;br&gt;</translation>
    </message>
    <message>
        <source>Select Installation Path for &apos;%1&apos;</source>
        <translation>Installationsordner für &apos;%1&apos; auswählen</translation>
    </message>
    <message>
        <source>Unpacking &apos;%1&apos;</source>
        <translation>&apos;%1&apos; wird entpackt</translation>
    </message>
</context>
<context>
    <name>SoftwareUpdateAvailableGui</name>
    <message>
        <source>Update Available</source>
        <translation>Update verfügbar</translation>
    </message>
    <message>
        <source>Select Packages from List:</source>
        <translation>Wählen Sie Pakete aus der Liste aus:</translation>
    </message>
    <message>
        <source>Show all languages</source>
        <translation>Alle Sprachen anzeigen</translation>
    </message>
    <message>
        <source>You can download and install the package manually or start the installation immediately (only available for supported package types).</source>
        <translation>Sie können das Paket manuell herunterladen und installieren oder die Installation sofort starten (nur für unterstützte Pakettypen verfügbar).</translation>
    </message>
    <message>
        <source>Release Notes</source>
        <translation>Versionsübersicht</translation>
    </message>
    <message>
        <source>Download Package</source>
        <translation>Paket herunterladen</translation>
    </message>
    <message>
        <source>Install Package</source>
        <translation>Paket installieren</translation>
    </message>
    <message>
        <source>For more information and updates visit &lt;a href=&quot;@QV_SUPPORT_URL_EN@&quot;&gt;@QV_SUPPORT_NAME_EN@&lt;/a&gt;</source>
        <translation>Weitere Informationen und Updates finden Sie unter &lt;a href=&quot;@QV_SUPPORT_URL_DE@&quot;&gt;@QV_SUPPORT_NAME_DE@&lt;/a&gt;</translation>
    </message>
    <message>
        <source>Update Settings...</source>
        <translation>Update-Einstellungen...</translation>
    </message>
</context>
<context>
    <name>SoftwareUpdateClient</name>
    <message>
        <source>No update available!</source>
        <translation>Kein Update vorhanden!</translation>
    </message>
    <message>
        <source>Congratulations! Your product is up-to-date!</source>
        <translation>Herzlichen Glückwunsch! Ihr Produkt ist aktuell!</translation>
    </message>
    <message>
        <source>Timeout error! Update server unreachable!</source>
        <translation>Zeitüberschreitung! Der Update-Server antwortet nicht!</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>File Size</source>
        <translation>Dateigröße</translation>
    </message>
    <message>
        <source>File Type</source>
        <translation>Dateityp</translation>
    </message>
    <message>
        <source>Languages</source>
        <translation>Sprachen</translation>
    </message>
    <message>
        <source>Platforms</source>
        <translation>Plattformen</translation>
    </message>
    <message>
        <source>Multilingual</source>
        <translation>Mehrsprachig</translation>
    </message>
    <message>
        <source>Published on %1</source>
        <translation>Veröffentlicht am %1</translation>
    </message>
    <message>
        <source>Install Package</source>
        <translation>Paket installieren</translation>
    </message>
    <message>
        <source>After downloading the package, the installer will automatically exit and restart your application!</source>
        <translation>Nach der Installation des Pakets wird die Anwendung automatisch beendet und neu gestartet!</translation>
    </message>
    <message>
        <source>Cancel Install</source>
        <translation>Installation abbrechen</translation>
    </message>
    <message>
        <source>Proceed</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>Downloading package to temporary folder...</source>
        <translation>Paket wird in den temporären Ordner heruntergeladen...</translation>
    </message>
    <message>
        <source>Download Error</source>
        <translation>Download-Fehler</translation>
    </message>
    <message>
        <source>Error downloading! Http status code %1</source>
        <translation>Fehler beim Herunterladen! HTTP-Statuscode %1</translation>
    </message>
    <message>
        <source>Unknown package type! Installation cannot proceed!</source>
        <translation>Unbekannter Pakettyp! Die Installation kann nicht fortgesetzt werden!</translation>
    </message>
    <message>
        <source>Restart required</source>
        <translation>Neustart erforderlich</translation>
    </message>
    <message>
        <source>Please restart your application to finish the installation process.</source>
        <translation>Bitte starten Sie die Anwendung neu, um die Installation abzuschließen.</translation>
    </message>
    <message>
        <source>Restart later</source>
        <translation>Später neu starten</translation>
    </message>
    <message>
        <source>Restart now</source>
        <translation>Jetzt neu starten</translation>
    </message>
    <message>
        <source>Installation failed</source>
        <translation>Installation fehlgeschlagen</translation>
    </message>
    <message>
        <source>Installation process failed. If problem persists try manual install.</source>
        <translation>Die Installation ist fehlgeschlagen. Falls das Problem weiterhin besteht, installieren Sie das Paket bitte manuell.</translation>
    </message>
</context>
<context>
    <name>SoftwareUpdateDialogGui</name>
    <message>
        <source>Check for Updates</source>
        <translation>Nach Updates suchen</translation>
    </message>
    <message>
        <source>You can search for new versions manually or automatically.</source>
        <translation>Sie können manuell oder automatisch nach neuen Versionen suchen.</translation>
    </message>
    <message>
        <source>Current version:</source>
        <translation>Aktuelle Version:</translation>
    </message>
    <message>
        <source>Check Now</source>
        <translation>Jetzt suchen</translation>
    </message>
    <message>
        <source>Last check</source>
        <translation>Letzte Suche</translation>
    </message>
    <message>
        <source>Check for updates:</source>
        <translation>Nach Updates suchen:</translation>
    </message>
    <message>
        <source>At application start</source>
        <translation>Beim Programmstart</translation>
    </message>
    <message>
        <source>Daily</source>
        <translation>Täglich</translation>
    </message>
    <message>
        <source>Weekly</source>
        <translation>Wöchentlich</translation>
    </message>
    <message>
        <source>Monthly</source>
        <translation>Monatlich</translation>
    </message>
    <message>
        <source>Include beta versions</source>
        <translation>Beta-Versionen einschließen</translation>
    </message>
    <message>
        <source>Update server URL:</source>
        <translation>URL des Update-Servers:</translation>
    </message>
</context>
</TS>
