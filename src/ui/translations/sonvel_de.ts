<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>AppsSection</name>
    <message>
        <source>APPS</source>
        <translation>APPS</translation>
    </message>
    <message>
        <source>Play audio in an app and it shows up here.</source>
        <translation>Sobald eine App Ton wiedergibt, erscheint sie hier.</translation>
    </message>
</context>
<context>
    <name>ChannelRow</name>
    <message>
        <source>Remove from list</source>
        <translation>Aus der Liste entfernen</translation>
    </message>
    <message>
        <source>Adjusts this app&apos;s output volume</source>
        <translation>Regelt die Lautstärke dieser App</translation>
    </message>
    <message>
        <source>Paused — keeps this volume when it plays again</source>
        <translation>Pausiert – behält diese Lautstärke für die nächste Wiedergabe</translation>
    </message>
</context>
<context>
    <name>ClosingCard</name>
    <message>
        <source>Closing this window</source>
        <translation>Dieses Fenster schließen</translation>
    </message>
    <message>
        <source>This desktop shows no tray icon. Unless you choose otherwise, Sonvel keeps running when you close this window, and every app stays as you set it; start Sonvel again to open the window. Quitting gives every app its own sound back.</source>
        <translation>Diese Arbeitsumgebung zeigt keine Tray-Symbole. Sofern Sie nichts anderes wählen, läuft Sonvel nach dem Schließen dieses Fensters weiter, und jede App bleibt, wie Sie sie eingestellt haben; ein erneuter Start von Sonvel öffnet das Fenster wieder. Beim Beenden erhält jede App ihren eigenen Ton zurück.</translation>
    </message>
    <message>
        <source>Keep Running</source>
        <translation>Weiterlaufen lassen</translation>
    </message>
    <message>
        <source>Quit on Close</source>
        <translation>Beim Schließen beenden</translation>
    </message>
</context>
<context>
    <name>ErrorText</name>
    <message>
        <source>Audio control error</source>
        <translation>Fehler bei der Tonsteuerung</translation>
    </message>
</context>
<context>
    <name>IdleBadge</name>
    <message>
        <source>idle</source>
        <translation>inaktiv</translation>
    </message>
</context>
<context>
    <name>MasterSection</name>
    <message>
        <source>OUTPUT</source>
        <translation>AUSGABE</translation>
    </message>
    <message>
        <source>System Output</source>
        <translation>Systemausgabe</translation>
    </message>
    <message>
        <source>This output device has no adjustable master volume.</source>
        <translation>Die Gesamtlautstärke dieses Ausgabegeräts lässt sich nicht regeln.</translation>
    </message>
</context>
<context>
    <name>MenuBarActionRow</name>
    <message>
        <source>Check for Updates</source>
        <translation>Nach Updates suchen</translation>
    </message>
    <message>
        <source>Updates are not configured in this build.</source>
        <translation>In dieser Programmfassung sind keine Updates eingerichtet.</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>On Close…</source>
        <translation>Beim Schließen …</translation>
    </message>
</context>
<context>
    <name>OutputMenu</name>
    <message>
        <source>Follow System Output</source>
        <translation>Systemausgabe folgen</translation>
    </message>
</context>
<context>
    <name>PanelFooter</name>
    <message>
        <source>Reset all</source>
        <translation>Alle zurücksetzen</translation>
    </message>
    <message>
        <source>Everything → Speakers</source>
        <translation>Alles → Lautsprecher</translation>
    </message>
</context>
<context>
    <name>PermissionCard</name>
    <message>
        <source>To show and adjust each app&apos;s sound, Sonvel needs the sound server&apos;s permission to move and play what apps play. Nothing is recorded, saved, or sent; no restart, no driver. You can revoke it anytime.</source>
        <translation>Um den Ton jeder App anzuzeigen und zu regeln, braucht Sonvel vom Soundserver die Erlaubnis, die Wiedergabe der Apps umzuleiten und selbst auszugeben. Nichts wird aufgenommen, gespeichert oder versendet; kein Neustart, kein Treiber. Die Erlaubnis lässt sich jederzeit entziehen.</translation>
    </message>
    <message>
        <source>Tries whether the sound server lets Sonvel control other apps</source>
        <translation>Prüft, ob der Soundserver Sonvel andere Apps steuern lässt</translation>
    </message>
    <message>
        <source>Opens the page on how to give access to sound</source>
        <translation>Öffnet die Seite, die erklärt, wie man den Zugriff auf den Ton erlaubt</translation>
    </message>
    <message>
        <source>Access is currently denied. Allow “Sonvel” in the rules of the sound server, then it appears automatically.</source>
        <translation>Der Zugriff ist derzeit verweigert. Sobald „Sonvel“ in den Regeln des Soundservers erlaubt ist, erscheint alles von selbst.</translation>
    </message>
    <message>
        <source>This desktop has no settings for access to sound. Restart Sonvel outside of its sandbox, or see docs/access.md.</source>
        <translation>Diese Arbeitsumgebung hat keine Einstellungen für den Zugriff auf den Ton. Sonvel außerhalb seiner Sandbox neu starten oder in docs/access.md nachlesen.</translation>
    </message>
    <message>
        <source>Waiting…</source>
        <translation>Bitte warten …</translation>
    </message>
    <message>
        <source>Grant Audio Access</source>
        <translation>Tonzugriff erlauben</translation>
    </message>
    <message>
        <source>Open Settings</source>
        <translation>Einstellungen öffnen</translation>
    </message>
</context>
<context>
    <name>ServerNotice</name>
    <message>
        <source>Sound runs on PulseAudio here, which Sonvel can&apos;t control. Install the package pipewire-audio and log in again.</source>
        <translation>Der Ton läuft hier über PulseAudio, das Sonvel nicht steuern kann. Das Paket pipewire-audio installieren und neu anmelden.</translation>
    </message>
    <message>
        <source>Waiting for the sound service to start.</source>
        <translation>Warten auf den Start des Sounddienstes.</translation>
    </message>
    <message>
        <source>The sound service has stopped. Sonvel goes on by itself when it is back.</source>
        <translation>Der Sounddienst ist ausgefallen. Sobald er wieder läuft, macht Sonvel von selbst weiter.</translation>
    </message>
</context>
<context>
    <name>UpdateNotes</name>
    <message>
        <source>Release notes</source>
        <translation>Versionshinweise</translation>
    </message>
</context>
<context>
    <name>UpdateWords</name>
    <message>
        <source>The update server can&apos;t be reached; check the network connection and try again.</source>
        <translation>Der Updateserver ist nicht erreichbar. Bitte die Netzwerkverbindung prüfen und es noch einmal versuchen.</translation>
    </message>
    <message>
        <source>The connection to the update server isn&apos;t secure, so nothing was read from it.</source>
        <translation>Die Verbindung zum Updateserver ist nicht sicher, deshalb wurde nichts von ihm gelesen.</translation>
    </message>
    <message>
        <source>The update server doesn&apos;t have what was asked for; try again later.</source>
        <translation>Der Updateserver hat das Angeforderte nicht. Bitte später noch einmal versuchen.</translation>
    </message>
    <message>
        <source>The update server took too long to answer; try again later.</source>
        <translation>Der Updateserver hat nicht rechtzeitig geantwortet. Bitte später noch einmal versuchen.</translation>
    </message>
    <message>
        <source>The connection to the update server broke off before everything had arrived; try again later.</source>
        <translation>Die Verbindung zum Updateserver brach ab, bevor alles angekommen war. Bitte später noch einmal versuchen.</translation>
    </message>
    <message>
        <source>The update server points to an address that isn&apos;t secure, so it was not followed.</source>
        <translation>Der Updateserver verweist auf eine unsichere Adresse, deshalb wurde dem Verweis nicht gefolgt.</translation>
    </message>
    <message>
        <source>The update server points from one address to another without an end.</source>
        <translation>Der Updateserver verweist endlos von einer Adresse auf die nächste.</translation>
    </message>
    <message>
        <source>The list of updates is too large to be genuine, so it was not read.</source>
        <translation>Die Liste der Updates ist zu groß, um echt zu sein, und wurde deshalb nicht gelesen.</translation>
    </message>
    <message>
        <source>The list of updates isn&apos;t signed by the maker of this program, so it was not used.</source>
        <translation>Die Liste der Updates ist nicht vom Hersteller dieses Programms signiert und wurde deshalb nicht verwendet.</translation>
    </message>
    <message>
        <source>The list of updates is damaged and can&apos;t be read.</source>
        <translation>Die Liste der Updates ist beschädigt und lässt sich nicht lesen.</translation>
    </message>
    <message>
        <source>The list of updates belongs to another program, so it was not used.</source>
        <translation>Die Liste der Updates gehört zu einem anderen Programm und wurde deshalb nicht verwendet.</translation>
    </message>
    <message>
        <source>The list of updates has expired, so there may be newer versions that it doesn&apos;t name.</source>
        <translation>Die Liste der Updates ist abgelaufen; es kann also neuere Versionen geben, die sie nicht nennt.</translation>
    </message>
    <message>
        <source>The update server offers something older than it did before, so it was not used.</source>
        <translation>Der Updateserver bietet Älteres an als zuvor, deshalb wurde es nicht verwendet.</translation>
    </message>
    <message>
        <source>The update is offered at an address that isn&apos;t secure, so it was not downloaded.</source>
        <translation>Das Update wird unter einer unsicheren Adresse angeboten und wurde deshalb nicht heruntergeladen.</translation>
    </message>
    <message>
        <source>The update is offered without all that is needed to check it, so it was not downloaded.</source>
        <translation>Dem Update fehlen Angaben, die zu seiner Prüfung nötig sind, deshalb wurde es nicht heruntergeladen.</translation>
    </message>
    <message>
        <source>The update is too large to be genuine, so it was not downloaded.</source>
        <translation>Das Update ist zu groß, um echt zu sein, und wurde deshalb nicht heruntergeladen.</translation>
    </message>
    <message>
        <source>The downloaded update doesn&apos;t have the size that was announced, so it was deleted.</source>
        <translation>Das heruntergeladene Update hat nicht die angekündigte Größe und wurde deshalb gelöscht.</translation>
    </message>
    <message>
        <source>The downloaded update isn&apos;t what its maker signed, so it was deleted.</source>
        <translation>Das heruntergeladene Update ist nicht das, was sein Hersteller signiert hat, und wurde deshalb gelöscht.</translation>
    </message>
    <message>
        <source>There isn&apos;t enough memory or space on the disk for the update.</source>
        <translation>Für das Update ist nicht genug Arbeitsspeicher oder Speicherplatz vorhanden.</translation>
    </message>
    <message>
        <source>The update isn&apos;t made for the way this program is installed, so it was not installed.</source>
        <translation>Das Update passt nicht zur Art, wie dieses Programm installiert ist, und wurde deshalb nicht installiert.</translation>
    </message>
    <message>
        <source>The program&apos;s file can&apos;t be replaced, so the update was not installed.</source>
        <translation>Die Programmdatei lässt sich nicht ersetzen, deshalb wurde das Update nicht installiert.</translation>
    </message>
    <message>
        <source>This desktop has no package installer that takes the update, so it was not installed.</source>
        <translation>Diese Arbeitsumgebung hat kein Installationsprogramm, das das Paket annimmt, deshalb wurde das Update nicht installiert.</translation>
    </message>
    <message>
        <source>The new version couldn&apos;t be started, so the previous one is back.</source>
        <translation>Die neue Version ließ sich nicht starten, deshalb läuft wieder die bisherige.</translation>
    </message>
    <message>
        <source>The new version didn&apos;t become ready in time, so the previous one is back.</source>
        <translation>Die neue Version war nicht rechtzeitig bereit, deshalb läuft wieder die bisherige.</translation>
    </message>
    <message>
        <source>The new version ended within a minute of its start, so the previous one is back.</source>
        <translation>Die neue Version endete binnen einer Minute nach dem Start, deshalb läuft wieder die bisherige.</translation>
    </message>
    <message>
        <source>%1 is available</source>
        <translation>%1 ist verfügbar</translation>
    </message>
    <message>
        <source>You have version %1. The download is %2.</source>
        <translation>Installiert ist Version %1. Der Download ist %2 groß.</translation>
    </message>
    <message>
        <source>Download</source>
        <translation>Herunterladen</translation>
    </message>
    <message>
        <source>Not Now</source>
        <translation>Nicht jetzt</translation>
    </message>
    <message>
        <source>Downloading %1</source>
        <translation>%1 wird heruntergeladen</translation>
    </message>
    <message>
        <source>Nothing is installed before you say so.</source>
        <translation>Installiert wird erst nach Ihrer Zustimmung.</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>%1 is ready to install</source>
        <translation>%1 ist zur Installation bereit</translation>
    </message>
    <message>
        <source>It is complete and signed by its maker. The desktop&apos;s package installer takes it from here and may ask for your password.</source>
        <translation>Das Update ist vollständig und von seinem Hersteller signiert. Ab hier übernimmt das Installationsprogramm der Arbeitsumgebung und fragt möglicherweise nach Ihrem Passwort.</translation>
    </message>
    <message>
        <source>It is complete and signed by its maker. Sonvel returns every application&apos;s sound to normal, quits and starts again.</source>
        <translation>Das Update ist vollständig und von seinem Hersteller signiert. Sonvel gibt jeder Anwendung ihren normalen Ton zurück, beendet sich und startet neu.</translation>
    </message>
    <message>
        <source>Install</source>
        <translation>Installieren</translation>
    </message>
    <message>
        <source>Install and Relaunch</source>
        <translation>Installieren und neu starten</translation>
    </message>
    <message>
        <source>The package installer has the update</source>
        <translation>Das Installationsprogramm hat das Update</translation>
    </message>
    <message>
        <source>Finish the installation of %1 there, then quit Sonvel and open it again.</source>
        <translation>Schließen Sie dort die Installation von %1 ab, beenden Sie dann Sonvel und öffnen Sie es erneut.</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Sonvel couldn&apos;t be updated</source>
        <translation>Sonvel konnte nicht aktualisiert werden</translation>
    </message>
    <message>
        <source>Try Again</source>
        <translation>Erneut versuchen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Looking for a new version</source>
        <translation>Suche nach einer neuen Version</translation>
    </message>
    <message>
        <source>You have %1.</source>
        <translation>Installiert ist %1.</translation>
    </message>
    <message>
        <source>Sonvel is up to date</source>
        <translation>Sonvel ist auf dem neuesten Stand</translation>
    </message>
    <message>
        <source>Version %1 is the newest there is.</source>
        <translation>Version %1 ist die neueste.</translation>
    </message>
    <message>
        <source>The new version needs a newer system</source>
        <translation>Die neue Version braucht ein neueres System</translation>
    </message>
    <message>
        <source>There is a newer version of Sonvel, but it doesn&apos;t run on this system. You keep version %1.</source>
        <translation>Es gibt eine neuere Version von Sonvel, aber sie läuft auf diesem System nicht. Version %1 bleibt installiert.</translation>
    </message>
    <message>
        <source>Verifying %1</source>
        <translation>%1 wird geprüft</translation>
    </message>
    <message>
        <source>Checking that it is complete and signed by its maker.</source>
        <translation>Es wird geprüft, ob das Update vollständig und von seinem Hersteller signiert ist.</translation>
    </message>
    <message>
        <source>Installing %1</source>
        <translation>%1 wird installiert</translation>
    </message>
    <message>
        <source>This takes a moment.</source>
        <translation>Das dauert einen Augenblick.</translation>
    </message>
    <message>
        <source>%1 is installed</source>
        <translation>%1 ist installiert</translation>
    </message>
    <message>
        <source>Sonvel quits now and starts again as the new version.</source>
        <translation>Sonvel beendet sich jetzt und startet als neue Version wieder.</translation>
    </message>
</context>
<context>
    <name>sonvel::MixerViewModel</name>
    <message>
        <source>System Output</source>
        <translation>Systemausgabe</translation>
    </message>
    <message>
        <source>Device</source>
        <translation>Gerät</translation>
    </message>
    <message>
        <source>The chosen device</source>
        <translation>Das gewählte Gerät</translation>
    </message>
</context>
<context>
    <name>sonvel::PanelText</name>
    <message>
        <source>The sound server is not running.</source>
        <translation>Der Soundserver läuft nicht.</translation>
    </message>
    <message>
        <source>The sound server did not answer in time.</source>
        <translation>Der Soundserver hat nicht rechtzeitig geantwortet.</translation>
    </message>
    <message>
        <source>The device is not there.</source>
        <translation>Das Gerät ist nicht vorhanden.</translation>
    </message>
    <message>
        <source>The app is not there any more.</source>
        <translation>Die App ist nicht mehr da.</translation>
    </message>
    <message>
        <source>The sound server does not allow it.</source>
        <translation>Der Soundserver lässt es nicht zu.</translation>
    </message>
    <message>
        <source>%1 percent</source>
        <translation>%1 Prozent</translation>
    </message>
    <message>
        <source>%1 volume</source>
        <translation>Lautstärke von %1</translation>
    </message>
    <message>
        <source>Remove %1 from the mixer</source>
        <translation>%1 aus dem Mischer entfernen</translation>
    </message>
    <message>
        <source>Unmute %1</source>
        <translation>Stummschaltung von %1 aufheben</translation>
    </message>
    <message>
        <source>Mute %1</source>
        <translation>%1 stummschalten</translation>
    </message>
    <message>
        <source>Unmute</source>
        <translation>Stummschaltung aufheben</translation>
    </message>
    <message>
        <source>Mute</source>
        <translation>Stummschalten</translation>
    </message>
    <message>
        <source>Output for %1</source>
        <translation>Ausgabe von %1</translation>
    </message>
    <message>
        <source>Welcome to Sonvel</source>
        <translation>Willkommen bei Sonvel</translation>
    </message>
    <message>
        <source>One permission to control app audio</source>
        <translation>Eine Erlaubnis, um den Ton der Apps zu steuern</translation>
    </message>
    <message>
        <source>No apps have played audio yet.</source>
        <translation>Bisher hat keine App Ton wiedergegeben.</translation>
    </message>
    <message numerus="yes">
        <source>%n playing</source>
        <comment>applications</comment>
        <translation>
            <numerusform>%n spielt</numerusform>
            <numerusform>%n spielen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n idle</source>
        <comment>applications</comment>
        <translation>
            <numerusform>%n inaktiv</numerusform>
            <numerusform>%n inaktiv</numerusform>
        </translation>
    </message>
    <message>
        <source>Audio access was revoked. Audio was restored to its normal output.</source>
        <translation>Der Zugriff auf den Ton wurde entzogen. Der Ton läuft wieder über seine normale Ausgabe.</translation>
    </message>
    <message>
        <source>Audio access was revoked. Audio restoration is retrying: %1</source>
        <translation>Der Zugriff auf den Ton wurde entzogen. Die Wiederherstellung wird erneut versucht: %1</translation>
    </message>
    <message>
        <source>%1 is not connected.</source>
        <translation>%1 ist nicht verbunden.</translation>
    </message>
    <message>
        <source>Until it is, you hear this app on %1.</source>
        <translation>Bis dahin ist diese App über %1 zu hören.</translation>
    </message>
    <message>
        <source>Only part of this app’s sound can be controlled.</source>
        <translation>Nur ein Teil des Tons dieser App lässt sich steuern.</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <comment>two texts that are read aloud as one</comment>
        <translation>%1, %2</translation>
    </message>
</context>
<context>
    <name>sonvel::TrayControl</name>
    <message>
        <source>No output device</source>
        <translation>Kein Ausgabegerät</translation>
    </message>
    <message>
        <source>%1: muted</source>
        <translation>%1: stumm</translation>
    </message>
    <message>
        <source>%1: %2%</source>
        <translation>%1: %2 %</translation>
    </message>
    <message>
        <source>Sonvel %1

A volume for every application. Apache licence 2.0.</source>
        <translation>Sonvel %1

Eine Lautstärke für jede Anwendung. Apache-Lizenz 2.0.</translation>
    </message>
    <message>
        <source>
Updates come with %1.</source>
        <translation>
Updates kommen mit %1.</translation>
    </message>
    <message>
        <source>About Sonvel</source>
        <translation>Über Sonvel</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>sonvel::UpdateWindow</name>
    <message>
        <source>Sonvel Update</source>
        <translation>Sonvel-Update</translation>
    </message>
</context>
<context>
    <name>sonvel::ui::TrayIcon</name>
    <message>
        <source>Open Sonvel</source>
        <translation>Sonvel öffnen</translation>
    </message>
    <message>
        <source>Mute</source>
        <translation>Stummschalten</translation>
    </message>
    <message>
        <source>Start at login</source>
        <translation>Bei der Anmeldung starten</translation>
    </message>
    <message>
        <source>About Sonvel</source>
        <translation>Über Sonvel</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
</context>
</TS>
