<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>Alert</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>CameraBubble</name>
    <message>
        <source>Change size</source>
        <translation>Größe ändern</translation>
    </message>
    <message>
        <source>Mirror</source>
        <translation>Spiegeln</translation>
    </message>
    <message>
        <source>Camera</source>
        <translation>Kamera</translation>
    </message>
    <message>
        <source>Starting…</source>
        <translation>Startet …</translation>
    </message>
    <message>
        <source>No picture</source>
        <translation>Kein Bild</translation>
    </message>
</context>
<context>
    <name>CaptureBar</name>
    <message>
        <source>Capture bar</source>
        <translation>Aufnahmeleiste</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Area</source>
        <translation>Bereich</translation>
    </message>
    <message>
        <source>Window</source>
        <translation>Fenster</translation>
    </message>
    <message>
        <source>Screen</source>
        <translation>Bildschirm</translation>
    </message>
    <message>
        <source>Capture Area</source>
        <translation>Bereich aufnehmen</translation>
    </message>
    <message>
        <source>Capture Window</source>
        <translation>Fenster aufnehmen</translation>
    </message>
    <message>
        <source>Capture Full Screen</source>
        <translation>Ganzen Bildschirm aufnehmen</translation>
    </message>
    <message>
        <source>Camera</source>
        <translation>Kamera</translation>
    </message>
    <message>
        <source>System audio</source>
        <translation>Systemton</translation>
    </message>
    <message>
        <source>Recording countdown</source>
        <translation>Countdown vor der Aufnahme</translation>
    </message>
    <message>
        <source>Upload to</source>
        <translation>Hochladen nach</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>Verbinden</translation>
    </message>
    <message>
        <source>Connect to Vantrell…</source>
        <translation>Mit Vantrell verbinden …</translation>
    </message>
    <message>
        <source>Options</source>
        <translation>Optionen</translation>
    </message>
    <message>
        <source>More</source>
        <translation>Mehr</translation>
    </message>
    <message>
        <source>Later</source>
        <translation>Später</translation>
    </message>
    <message>
        <source>Install</source>
        <translation>Installieren</translation>
    </message>
    <message>
        <source>No camera</source>
        <translation>Keine Kamera</translation>
    </message>
    <message>
        <source>System audio: on</source>
        <translation>Systemton: an</translation>
    </message>
    <message>
        <source>System audio: off</source>
        <translation>Systemton: aus</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>Off</source>
        <translation>Aus</translation>
    </message>
    <message>
        <source>No project</source>
        <translation>Kein Projekt</translation>
    </message>
    <message>
        <source>Upload to: %1</source>
        <translation>Hochladen nach: %1</translation>
    </message>
    <message>
        <source>Upload to…</source>
        <translation>Hochladen nach …</translation>
    </message>
    <message>
        <source>Update to %1</source>
        <translation>Auf %1 aktualisieren</translation>
    </message>
    <message>
        <source>3 seconds</source>
        <translation>3 Sekunden</translation>
    </message>
    <message>
        <source>5 seconds</source>
        <translation>5 Sekunden</translation>
    </message>
    <message>
        <source>No projects yet. Create one in Vantrell</source>
        <translation>Noch keine Projekte. In Vantrell anlegen</translation>
    </message>
    <message>
        <source>Open after upload</source>
        <translation>Nach dem Hochladen öffnen</translation>
    </message>
    <message>
        <source>Separate cursor</source>
        <translation>Zeiger getrennt aufnehmen</translation>
    </message>
    <message>
        <source>Auto camera</source>
        <translation>Kamera automatisch</translation>
    </message>
    <message>
        <source>Send usage events</source>
        <translation>Nutzungsdaten senden</translation>
    </message>
    <message>
        <source>How often what is used; no names, titles or pictures</source>
        <translation>Wie oft was benutzt wird; keine Namen, Titel oder Bilder</translation>
    </message>
    <message>
        <source>Microphone</source>
        <translation>Mikrofon</translation>
    </message>
    <message>
        <source>Not connected</source>
        <translation>Nicht verbunden</translation>
    </message>
    <message>
        <source>%1: not connected</source>
        <translation>%1: nicht angeschlossen</translation>
    </message>
    <message>
        <source>Default</source>
        <translation>Standard</translation>
    </message>
    <message>
        <source>No microphone</source>
        <translation>Kein Mikrofon</translation>
    </message>
    <message>
        <source>System default</source>
        <translation>Standard des Systems</translation>
    </message>
    <message>
        <source>%1 (not connected)</source>
        <translation>%1 (nicht angeschlossen)</translation>
    </message>
    <message>
        <source>%1: off</source>
        <translation>%1: aus</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
</context>
<context>
    <name>CountdownPanel</name>
    <message>
        <source>Recording countdown</source>
        <translation>Countdown vor der Aufnahme</translation>
    </message>
    <message>
        <source>Click or press Escape to cancel, Enter to start now</source>
        <translation>Klick oder Esc bricht ab, Eingabe startet sofort</translation>
    </message>
    <message>
        <source>Recording starts in %1</source>
        <translation>Aufnahme beginnt in %1</translation>
    </message>
</context>
<context>
    <name>RecordingHUD</name>
    <message>
        <source>Recording</source>
        <translation>Aufnahme</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Stopp</translation>
    </message>
    <message>
        <source>Microphone level</source>
        <translation>Mikrofonpegel</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Restart</source>
        <translation>Neu beginnen</translation>
    </message>
    <message>
        <source>Start over, without what was recorded</source>
        <translation>Von vorn beginnen, ohne das bisher Aufgenommene</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>%1. %2</source>
        <extracomment>The recorded time, and what the button does.</extracomment>
        <translation>%1. %2</translation>
    </message>
    <message>
        <source>Resume</source>
        <translation>Fortsetzen</translation>
    </message>
    <message>
        <source>Click again to delete the recording</source>
        <translation>Zum Löschen der Aufnahme noch einmal klicken</translation>
    </message>
    <message>
        <source>Auto-stops at %1, your plan&apos;s recording limit</source>
        <translation>Endet von selbst bei %1, der Grenze Ihres Tarifs</translation>
    </message>
    <message>
        <source>Stop recording</source>
        <translation>Aufnahme beenden</translation>
    </message>
    <message>
        <source>Stop recording (%1)</source>
        <extracomment>%1 are keys as the desktop words them, &quot;Meta+Shift+9&quot;.</extracomment>
        <translation>Aufnahme beenden (%1)</translation>
    </message>
    <message>
        <source>Stop recording (%1-Shift-9)</source>
        <extracomment>%1 is the key that stands for the command key, &quot;Super&quot;.</extracomment>
        <translation>Aufnahme beenden (%1-Umschalt-9)</translation>
    </message>
    <message>
        <source>Super</source>
        <translation>Super</translation>
    </message>
</context>
<context>
    <name>SelectionOverlay</name>
    <message>
        <source>Record</source>
        <translation>Aufnehmen</translation>
    </message>
    <message>
        <source>Capture</source>
        <translation>Foto</translation>
    </message>
    <message>
        <source>Enter</source>
        <translation>Eingabe</translation>
    </message>
    <message>
        <source>Ctrl+Enter</source>
        <translation>Strg+Eingabe</translation>
    </message>
    <message>
        <source>Take a still</source>
        <translation>Standbild aufnehmen</translation>
    </message>
    <message>
        <source>Arrows</source>
        <translation>Pfeile</translation>
    </message>
    <message>
        <source>Move by 1, with Shift by 10</source>
        <translation>Um 1 verschieben, mit Umschalt um 10</translation>
    </message>
    <message>
        <source>Alt+Arrows</source>
        <translation>Alt+Pfeile</translation>
    </message>
    <message>
        <source>Resize by 1, with Shift by 10</source>
        <translation>Größe um 1 ändern, mit Umschalt um 10</translation>
    </message>
    <message>
        <source>Ctrl+A</source>
        <translation>Strg+A</translation>
    </message>
    <message>
        <source>Select the whole screen</source>
        <translation>Ganzen Bildschirm wählen</translation>
    </message>
    <message>
        <source>Shift</source>
        <translation>Umschalt</translation>
    </message>
    <message>
        <source>Keep the proportions while dragging</source>
        <translation>Seitenverhältnis beim Ziehen halten</translation>
    </message>
    <message>
        <source>Alt</source>
        <translation>Alt</translation>
    </message>
    <message>
        <source>Drag from the centre</source>
        <translation>Von der Mitte aus ziehen</translation>
    </message>
    <message>
        <source>Space</source>
        <translation>Leertaste</translation>
    </message>
    <message>
        <source>Move what is being drawn</source>
        <translation>Verschieben, was gerade gezogen wird</translation>
    </message>
    <message>
        <source>Tab</source>
        <translation>Tab</translation>
    </message>
    <message>
        <source>Next window</source>
        <translation>Nächstes Fenster</translation>
    </message>
    <message>
        <source>Next screen</source>
        <translation>Nächster Bildschirm</translation>
    </message>
    <message>
        <source>Ctrl+Click</source>
        <translation>Strg+Klick</translation>
    </message>
    <message>
        <source>Area, window, screen</source>
        <translation>Bereich, Fenster, Bildschirm</translation>
    </message>
    <message>
        <source>Go to the capture bar</source>
        <translation>Zur Aufnahmeleiste</translation>
    </message>
    <message>
        <source>Escape</source>
        <translation>Esc</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>That window has been closed</source>
        <translation>Das Fenster wurde geschlossen</translation>
    </message>
    <message>
        <source>Drag anywhere to select an area</source>
        <translation>Ziehen Sie, um einen Bereich zu wählen</translation>
    </message>
    <message>
        <source>Click a window to record it</source>
        <translation>Klicken Sie auf ein Fenster, um es aufzunehmen</translation>
    </message>
    <message>
        <source>There is no window to record</source>
        <translation>Kein Fenster zum Aufnehmen da</translation>
    </message>
    <message>
        <source>Click a screen to record it</source>
        <translation>Klicken Sie auf einen Bildschirm, um ihn aufzunehmen</translation>
    </message>
    <message>
        <source>Keys</source>
        <translation>Tasten</translation>
    </message>
    <message>
        <source>Click, then choose a window in the desktop&apos;s dialog</source>
        <translation>Klicken, dann im Dialog des Desktops ein Fenster wählen</translation>
    </message>
</context>
<context>
    <name>Sentences</name>
    <message>
        <source>Capture Area</source>
        <translation>Bereich aufnehmen</translation>
    </message>
    <message>
        <source>Capture Window</source>
        <translation>Fenster aufnehmen</translation>
    </message>
    <message>
        <source>Capture Full Screen</source>
        <translation>Ganzen Bildschirm aufnehmen</translation>
    </message>
    <message>
        <source>Start Recording…</source>
        <translation>Aufnahme beginnen …</translation>
    </message>
    <message>
        <source>Stop Recording</source>
        <translation>Aufnahme beenden</translation>
    </message>
    <message>
        <source>Record Microphone</source>
        <translation>Mikrofon aufnehmen</translation>
    </message>
    <message>
        <source>Another program holds the keys of %1</source>
        <translation>Ein anderes Programm belegt die Tasten von „%1“</translation>
    </message>
    <message>
        <source>Hot keys are bound in the desktop&apos;s settings</source>
        <translation>Tastenkürzel legen Sie in den Einstellungen des Desktops fest</translation>
    </message>
    <message>
        <source>Recording in progress</source>
        <translation>Aufnahme läuft</translation>
    </message>
    <message>
        <source>Uploading 1 capture…</source>
        <translation>1 Aufnahme wird hochgeladen …</translation>
    </message>
    <message numerus="yes">
        <source>Uploading %n captures…</source>
        <translation>
            <numerusform>%n Aufnahme wird hochgeladen …</numerusform>
            <numerusform>%n Aufnahmen werden hochgeladen …</numerusform>
        </translation>
    </message>
    <message>
        <source>Upload to…</source>
        <translation>Hochladen nach …</translation>
    </message>
    <message>
        <source>Upload to: %1</source>
        <translation>Hochladen nach: %1</translation>
    </message>
    <message>
        <source>No projects yet. Create one in Vantrell</source>
        <translation>Noch keine Projekte. In Vantrell anlegen</translation>
    </message>
    <message>
        <source>Refresh Projects</source>
        <translation>Projekte neu laden</translation>
    </message>
    <message>
        <source>Connect to Vantrell…</source>
        <translation>Mit Vantrell verbinden …</translation>
    </message>
    <message>
        <source>Disconnect from Vantrell</source>
        <translation>Von Vantrell trennen</translation>
    </message>
    <message>
        <source>Waiting for approval in browser…</source>
        <translation>Warten auf die Freigabe im Browser …</translation>
    </message>
    <message>
        <source>Reopen Approval Page</source>
        <translation>Freigabeseite erneut öffnen</translation>
    </message>
    <message>
        <source>Cancel Pairing</source>
        <translation>Verbinden abbrechen</translation>
    </message>
    <message>
        <source>Open Vantrell</source>
        <translation>Vantrell öffnen</translation>
    </message>
    <message>
        <source>Check for Updates…</source>
        <translation>Nach Aktualisierungen suchen …</translation>
    </message>
    <message>
        <source>Update to %1</source>
        <translation>Auf %1 aktualisieren</translation>
    </message>
    <message>
        <source>Launch at Login</source>
        <translation>Bei der Anmeldung starten</translation>
    </message>
    <message>
        <source>Quit Vantrell Capture</source>
        <translation>Vantrell Capture beenden</translation>
    </message>
    <message>
        <source>Screen Recording permission needed</source>
        <translation>Erlaubnis zur Bildschirmaufnahme nötig</translation>
    </message>
    <message>
        <source>Enable Screen Recording…</source>
        <translation>Bildschirmaufnahme erlauben …</translation>
    </message>
    <message>
        <source>Vantrell Capture, recording</source>
        <translation>Vantrell Capture, Aufnahme läuft</translation>
    </message>
    <message>
        <source>Vantrell Capture, uploading</source>
        <translation>Vantrell Capture, lädt hoch</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Retry</source>
        <translation>Erneut</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Later</source>
        <translation>Später</translation>
    </message>
    <message>
        <source>Not Now</source>
        <translation>Nicht jetzt</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>Open Folder</source>
        <translation>Ordner öffnen</translation>
    </message>
    <message>
        <source>Could not open the file</source>
        <translation>Die Datei ließ sich nicht öffnen</translation>
    </message>
    <message>
        <source>There is no file %1</source>
        <translation>Es gibt keine Datei %1</translation>
    </message>
    <message>
        <source>%1 is neither a .mov recording nor a .png screenshot</source>
        <translation>%1 ist weder eine Aufnahme (.mov) noch ein Bildschirmfoto (.png)</translation>
    </message>
    <message>
        <source>Could not connect to Vantrell</source>
        <translation>Verbindung mit Vantrell nicht möglich</translation>
    </message>
    <message>
        <source>Vantrell Capture ended unexpectedly</source>
        <translation>Vantrell Capture wurde unerwartet beendet</translation>
    </message>
    <message>
        <source>What it was doing is in a file on this computer, for a bug report if you want to write one. Nothing was sent anywhere. A recording that was cut off is on the shelf.</source>
        <translation>Was es gerade tat, steht in einer Datei auf diesem Rechner, für einen Fehlerbericht, wenn Sie einen schreiben möchten. Es wurde nichts gesendet. Eine abgebrochene Aufnahme liegt in der Ablage.</translation>
    </message>
    <message>
        <source>Move Vantrell Capture to Applications</source>
        <translation>Vantrell Capture zu den Anwendungen verschieben</translation>
    </message>
    <message>
        <source>Move to Applications</source>
        <translation>Verschieben</translation>
    </message>
    <message>
        <source>Vantrell Capture is running from the disk image. %1 cannot remember the Screen Recording permission from there, so the app will move itself into Applications and reopen.</source>
        <translation>Vantrell Capture läuft aus einem Abbild. %1 kann sich die Erlaubnis zur Bildschirmaufnahme von dort nicht merken; die Anwendung verschiebt sich deshalb zu den Anwendungen und startet neu.</translation>
    </message>
    <message>
        <source>Could not move Vantrell Capture</source>
        <translation>Vantrell Capture ließ sich nicht verschieben</translation>
    </message>
    <message>
        <source>Vantrell Capture needs %1 Screen Recording permission. You will approve once, then the app restarts.</source>
        <translation>Vantrell Capture braucht von %1 die Erlaubnis zur Bildschirmaufnahme. Sie stimmen einmal zu, dann startet die Anwendung neu.</translation>
    </message>
    <message>
        <source>Allow Vantrell Capture to record the screen</source>
        <translation>Vantrell Capture die Bildschirmaufnahme erlauben</translation>
    </message>
    <message>
        <source>%1 asks for this once. Turn on Vantrell Capture under Screen &amp; System Audio Recording, and this window will close and reopen the app for you automatically.</source>
        <translation>%1 fragt danach einmal. Schalten Sie Vantrell Capture unter Bildschirm- und Systemtonaufnahme ein; dieses Fenster schließt sich dann und die Anwendung startet von selbst neu.</translation>
    </message>
    <message>
        <source>Updates come with your system</source>
        <translation>Aktualisierungen kommen mit Ihrem System</translation>
    </message>
    <message>
        <source>Could not check for updates</source>
        <translation>Die Suche nach Aktualisierungen ist gescheitert</translation>
    </message>
    <message>
        <source>Vantrell Capture is up to date</source>
        <translation>Vantrell Capture ist aktuell</translation>
    </message>
    <message>
        <source>Version %1 is the newest there is.</source>
        <translation>Version %1 ist die neueste.</translation>
    </message>
    <message>
        <source>Vantrell Capture %1 is available</source>
        <translation>Vantrell Capture %1 ist da</translation>
    </message>
    <message>
        <source>You have version %1. The new one is downloaded and put in its place; then the app restarts.</source>
        <translation>Sie haben Version %1. Die neue wird geladen und tritt an ihre Stelle; dann startet die Anwendung neu.</translation>
    </message>
    <message>
        <source>Install and Restart</source>
        <translation>Installieren und neu starten</translation>
    </message>
    <message>
        <source>Vantrell Capture %1 is ready</source>
        <translation>Vantrell Capture %1 ist bereit</translation>
    </message>
    <message>
        <source>The app restarts with it.</source>
        <translation>Die Anwendung startet damit neu.</translation>
    </message>
    <message>
        <source>Restart Now</source>
        <translation>Jetzt neu starten</translation>
    </message>
    <message>
        <source>Could not update Vantrell Capture</source>
        <translation>Vantrell Capture ließ sich nicht aktualisieren</translation>
    </message>
    <message>
        <source>The server with the updates cannot be reached</source>
        <translation>Der Server mit den Aktualisierungen ist nicht erreichbar</translation>
    </message>
    <message>
        <source>The list of updates is not from Vantrell</source>
        <translation>Die Liste der Aktualisierungen stammt nicht von Vantrell</translation>
    </message>
    <message>
        <source>The update arrived damaged</source>
        <translation>Die Aktualisierung kam beschädigt an</translation>
    </message>
    <message>
        <source>The update could not be put in place</source>
        <translation>Die Aktualisierung ließ sich nicht einsetzen</translation>
    </message>
    <message>
        <source>The update could not be put in place: %1</source>
        <translation>Die Aktualisierung ließ sich nicht einsetzen: %1</translation>
    </message>
    <message>
        <source>The update was cancelled</source>
        <translation>Die Aktualisierung wurde abgebrochen</translation>
    </message>
    <message>
        <source>Flatpak brings the updates of Vantrell Capture</source>
        <translation>Flatpak bringt die Aktualisierungen von Vantrell Capture</translation>
    </message>
    <message>
        <source>Snap brings the updates of Vantrell Capture</source>
        <translation>Snap bringt die Aktualisierungen von Vantrell Capture</translation>
    </message>
    <message>
        <source>Your system brings the updates of Vantrell Capture</source>
        <translation>Ihr System bringt die Aktualisierungen von Vantrell Capture</translation>
    </message>
    <message>
        <source>Your system&apos;s package manager (%1) brings the updates of Vantrell Capture</source>
        <translation>Die Paketverwaltung Ihres Systems (%1) bringt die Aktualisierungen von Vantrell Capture</translation>
    </message>
    <message>
        <source>Uploading…</source>
        <translation>Wird hochgeladen …</translation>
    </message>
    <message>
        <source>Uploading %1%</source>
        <translation>Hochgeladen: %1 %</translation>
    </message>
    <message>
        <source>Processing…</source>
        <translation>In Arbeit …</translation>
    </message>
    <message>
        <source>In your library</source>
        <translation>In Ihrer Bibliothek</translation>
    </message>
    <message>
        <source>Pick a project in the menu bar first</source>
        <translation>Wählen Sie zuerst im Menü ein Projekt</translation>
    </message>
    <message>
        <source>Upload failed</source>
        <translation>Hochladen gescheitert</translation>
    </message>
    <message>
        <source>Upload failed. Check your connection.</source>
        <translation>Hochladen gescheitert. Prüfen Sie die Verbindung.</translation>
    </message>
    <message>
        <source>Connection to Vantrell expired. Reconnect from the menu bar.</source>
        <translation>Die Verbindung mit Vantrell ist abgelaufen. Verbinden Sie im Menü neu.</translation>
    </message>
    <message>
        <source>This recording is over your plan&apos;s size limit.</source>
        <translation>Die Aufnahme ist größer, als Ihr Tarif erlaubt.</translation>
    </message>
    <message>
        <source>That project was deleted. Pick another, then retry.</source>
        <translation>Das Projekt wurde gelöscht. Wählen Sie ein anderes und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>The recording file was cleaned up and can&apos;t be re-uploaded</source>
        <translation>Die Datei der Aufnahme wurde aufgeräumt und lässt sich nicht erneut hochladen</translation>
    </message>
    <message>
        <source>This capture&apos;s file is gone</source>
        <translation>Die Datei dieser Aufnahme ist weg</translation>
    </message>
    <message>
        <source>Connect to Vantrell in the menu bar first</source>
        <translation>Erst im Menü mit Vantrell verbinden</translation>
    </message>
    <message>
        <source>Nothing to upload. The recording never finished saving.</source>
        <translation>Nichts hochzuladen. Die Aufnahme wurde nie fertig gespeichert.</translation>
    </message>
    <message>
        <source>Screen recording</source>
        <translation>Bildschirmaufnahme</translation>
    </message>
    <message>
        <source>Screenshot</source>
        <translation>Bildschirmfoto</translation>
    </message>
    <message>
        <source>Screen recording (recovered)</source>
        <translation>Bildschirmaufnahme (gerettet)</translation>
    </message>
    <message>
        <source>Recorded without sound: %1</source>
        <translation>Ohne Ton aufgenommen: %1</translation>
    </message>
    <message>
        <source>Recording failed to save: %1</source>
        <translation>Die Aufnahme ließ sich nicht speichern: %1</translation>
    </message>
    <message>
        <source>The recording ended unexpectedly</source>
        <translation>Die Aufnahme endete unerwartet</translation>
    </message>
    <message>
        <source>Saving the recording timed out</source>
        <translation>Das Speichern der Aufnahme dauerte zu lange</translation>
    </message>
    <message>
        <source>Not enough free disk space to record (2 GB needed)</source>
        <translation>Zu wenig freier Speicherplatz zum Aufnehmen (2 GB nötig)</translation>
    </message>
    <message>
        <source>No sound server is running on this desktop</source>
        <translation>Auf diesem Desktop läuft kein Tonserver</translation>
    </message>
    <message>
        <source>The chosen microphone is not connected</source>
        <translation>Das gewählte Mikrofon ist nicht angeschlossen</translation>
    </message>
    <message>
        <source>No microphone is connected</source>
        <translation>Kein Mikrofon ist angeschlossen</translation>
    </message>
    <message>
        <source>The sound server does not answer</source>
        <translation>Der Tonserver antwortet nicht</translation>
    </message>
    <message>
        <source>Cameras cannot be used on this desktop</source>
        <translation>Kameras lassen sich auf diesem Desktop nicht benutzen</translation>
    </message>
    <message>
        <source>No camera is connected</source>
        <translation>Keine Kamera ist angeschlossen</translation>
    </message>
    <message>
        <source>The camera is in use by another program</source>
        <translation>Die Kamera wird von einem anderen Programm benutzt</translation>
    </message>
    <message>
        <source>The desktop does not allow the use of cameras</source>
        <translation>Der Desktop erlaubt die Benutzung von Kameras nicht</translation>
    </message>
    <message>
        <source>The camera sends no picture</source>
        <translation>Die Kamera liefert kein Bild</translation>
    </message>
    <message>
        <source>The camera was disconnected</source>
        <translation>Die Kamera wurde abgezogen</translation>
    </message>
    <message>
        <source>The desktop&apos;s camera service does not answer</source>
        <translation>Der Kameradienst des Desktops antwortet nicht</translation>
    </message>
    <message>
        <source>Request failed (%1)</source>
        <translation>Anfrage gescheitert (%1)</translation>
    </message>
    <message>
        <source>Network error</source>
        <translation>Netzwerkfehler</translation>
    </message>
    <message>
        <source>Capture already uploaded</source>
        <translation>Aufnahme ist schon hochgeladen</translation>
    </message>
    <message>
        <source>Not connected to Vantrell</source>
        <translation>Nicht mit Vantrell verbunden</translation>
    </message>
    <message>
        <source>Unexpected server response</source>
        <translation>Unerwartete Antwort des Servers</translation>
    </message>
    <message>
        <source>Could not encode the capture</source>
        <translation>Die Aufnahme ließ sich nicht kodieren</translation>
    </message>
    <message>
        <source>The file changed while it was being uploaded</source>
        <translation>Die Datei hat sich während des Hochladens geändert</translation>
    </message>
    <message>
        <source>The connection was denied on the approval page</source>
        <translation>Die Verbindung wurde auf der Freigabeseite abgelehnt</translation>
    </message>
    <message>
        <source>The connection was not approved in time</source>
        <translation>Die Verbindung wurde nicht rechtzeitig freigegeben</translation>
    </message>
    <message>
        <source>The connection&apos;s code was already used</source>
        <translation>Der Code der Verbindung wurde schon benutzt</translation>
    </message>
    <message>
        <source>The connection was approved, but could not be stored</source>
        <translation>Die Verbindung wurde freigegeben, ließ sich aber nicht speichern</translation>
    </message>
    <message>
        <source>The connection was approved and is stored as soon as the keyring is unlocked</source>
        <translation>Die Verbindung ist freigegeben und wird gespeichert, sobald der Schlüsselbund offen ist</translation>
    </message>
    <message>
        <source>The keyring does not answer</source>
        <translation>Der Schlüsselbund antwortet nicht</translation>
    </message>
    <message>
        <source>The keyring has no default keyring to store the connection in; create one and try again</source>
        <translation>Es gibt keinen Standardschlüsselbund für die Verbindung; legen Sie einen an und versuchen Sie es erneut</translation>
    </message>
    <message>
        <source>The keyring is locked; unlock it to use the connection</source>
        <translation>Der Schlüsselbund ist gesperrt; entsperren Sie ihn, um die Verbindung zu benutzen</translation>
    </message>
    <message>
        <source>The keyring refused access to the connection</source>
        <translation>Der Schlüsselbund gibt die Verbindung nicht heraus</translation>
    </message>
    <message>
        <source>This desktop has no keyring (Secret Service), such as GNOME Keyring, KWallet or KeePassXC</source>
        <translation>Dieser Desktop hat keinen Schlüsselbund (Secret Service) wie GNOME Keyring, KWallet oder KeePassXC</translation>
    </message>
    <message>
        <source>%1

Drag Vantrell Capture into your Applications folder and open it from there.</source>
        <translation>%1

Ziehen Sie Vantrell Capture in Ihren Ordner für Anwendungen und öffnen Sie es von dort.</translation>
    </message>
    <message>
        <source>Camera recording</source>
        <translation>Kameraaufnahme</translation>
    </message>
    <message>
        <source>Camera recording failed to save</source>
        <translation>Die Kameraaufnahme ließ sich nicht speichern</translation>
    </message>
    <message>
        <source>No camera</source>
        <translation>Keine Kamera</translation>
    </message>
    <message>
        <source>Recorded without camera: %1</source>
        <translation>Ohne Kamera aufgenommen: %1</translation>
    </message>
    <message>
        <source>Resume</source>
        <translation>Fortsetzen</translation>
    </message>
    <message>
        <source>Start or Stop Recording</source>
        <translation>Aufnahme beginnen oder beenden</translation>
    </message>
    <message>
        <source>Open System Settings</source>
        <translation>Systemeinstellungen öffnen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>The moved copy could not be started</source>
        <translation>Die verschobene Kopie ließ sich nicht starten</translation>
    </message>
    <message>
        <source>Disconnected</source>
        <translation>Nicht angeschlossen</translation>
    </message>
    <message>
        <source>In use elsewhere</source>
        <translation>Anderswo benutzt</translation>
    </message>
    <message>
        <source>No picture</source>
        <translation>Kein Bild</translation>
    </message>
    <message>
        <source>The file became shorter while it was uploaded</source>
        <translation>Die Datei ist während des Hochladens kürzer geworden</translation>
    </message>
    <message>
        <source>The disk is full</source>
        <translation>Der Datenträger ist voll</translation>
    </message>
    <message>
        <source>Your share of the disk is full</source>
        <translation>Ihr Anteil am Datenträger ist voll</translation>
    </message>
    <message>
        <source>Another Vantrell Capture is running and has the list of uploads open</source>
        <translation>Ein anderes Vantrell Capture läuft und hat die Liste der Übertragungen offen</translation>
    </message>
    <message>
        <source>The keyring was not waited for</source>
        <translation>Auf den Schlüsselbund wurde nicht gewartet</translation>
    </message>
    <message>
        <source>The recording is still being saved</source>
        <translation>Die Aufnahme wird noch gespeichert</translation>
    </message>
    <message>
        <source>There is nothing to see of it yet</source>
        <translation>Davon ist noch nichts zu sehen</translation>
    </message>
    <message>
        <source>The video encoder could not be started</source>
        <translation>Die Videokodierung ließ sich nicht starten</translation>
    </message>
    <message>
        <source>The video encoder failed</source>
        <translation>Die Videokodierung ist gescheitert</translation>
    </message>
    <message>
        <source>The video encoder keeps frames back</source>
        <translation>Die Videokodierung hält Bilder zurück</translation>
    </message>
    <message>
        <source>The display&apos;s pixel format is not supported</source>
        <translation>Das Pixelformat des Bildschirms wird nicht unterstützt</translation>
    </message>
    <message>
        <source>The display&apos;s pixel format is not supported (24 bit colour is)</source>
        <translation>Das Pixelformat des Bildschirms wird nicht unterstützt (nur 24 Bit Farbe)</translation>
    </message>
    <message>
        <source>There is no desktop to record</source>
        <translation>Es gibt keinen Desktop zum Aufnehmen</translation>
    </message>
    <message>
        <source>The area is smaller than a pixel</source>
        <translation>Der Bereich ist kleiner als ein Pixel</translation>
    </message>
    <message>
        <source>The area lies outside every display</source>
        <translation>Der Bereich liegt außerhalb aller Bildschirme</translation>
    </message>
    <message>
        <source>There is no display</source>
        <translation>Es gibt keinen Bildschirm</translation>
    </message>
    <message>
        <source>There is no display %1</source>
        <translation>Es gibt keinen Bildschirm %1</translation>
    </message>
    <message>
        <source>There is no window %1</source>
        <translation>Es gibt kein Fenster %1</translation>
    </message>
    <message>
        <source>There is no display to record: no X server answers</source>
        <translation>Es gibt keinen Bildschirm zum Aufnehmen: kein X-Server antwortet</translation>
    </message>
    <message>
        <source>The display server lacks the extension %1</source>
        <translation>Dem X-Server fehlt die Erweiterung %1</translation>
    </message>
    <message>
        <source>The display server shares no memory with this session (MIT-SHM)</source>
        <translation>Der X-Server teilt keinen Speicher mit dieser Sitzung (MIT-SHM)</translation>
    </message>
    <message>
        <source>The display server refuses to be captured</source>
        <translation>Der X-Server lässt sich nicht aufnehmen</translation>
    </message>
    <message>
        <source>The connection to the display server was lost</source>
        <translation>Die Verbindung zum X-Server ist abgerissen</translation>
    </message>
    <message>
        <source>Not enough memory to capture the screen</source>
        <translation>Zu wenig Arbeitsspeicher, um den Bildschirm aufzunehmen</translation>
    </message>
    <message>
        <source>There is not enough memory for the picture</source>
        <translation>Für das Bild ist zu wenig Arbeitsspeicher da</translation>
    </message>
    <message>
        <source>The recorded display was disconnected</source>
        <translation>Der aufgenommene Bildschirm wurde abgezogen</translation>
    </message>
    <message>
        <source>The recorded window was closed</source>
        <translation>Das aufgenommene Fenster wurde geschlossen</translation>
    </message>
    <message>
        <source>The window was closed before it was captured</source>
        <translation>Das Fenster wurde geschlossen, bevor es aufgenommen war</translation>
    </message>
    <message>
        <source>The desktop changed its size while it was captured</source>
        <translation>Der Desktop hat während der Aufnahme seine Größe geändert</translation>
    </message>
    <message>
        <source>The desktop&apos;s portal is missing: install xdg-desktop-portal and the part of it for this desktop, then log in again</source>
        <translation>Das Portal des Desktops fehlt: installieren Sie xdg-desktop-portal und dessen Teil für diesen Desktop und melden Sie sich neu an</translation>
    </message>
    <message>
        <source>The desktop refused it</source>
        <translation>Der Desktop hat es abgelehnt</translation>
    </message>
    <message>
        <source>The desktop&apos;s portal does not answer</source>
        <translation>Das Portal des Desktops antwortet nicht</translation>
    </message>
    <message>
        <source>The desktop&apos;s portal went away</source>
        <translation>Das Portal des Desktops ist weg</translation>
    </message>
    <message>
        <source>The desktop ended the sharing of the screen</source>
        <translation>Der Desktop hat die Freigabe des Bildschirms beendet</translation>
    </message>
    <message>
        <source>The desktop sends no picture of what was chosen</source>
        <translation>Der Desktop liefert kein Bild von dem, was gewählt wurde</translation>
    </message>
    <message>
        <source>PipeWire, which carries the screen, went away</source>
        <translation>PipeWire, das den Bildschirm überträgt, ist weg</translation>
    </message>
    <message>
        <source>PipeWire, which carries the screen, cannot be reached</source>
        <translation>PipeWire, das den Bildschirm überträgt, ist nicht erreichbar</translation>
    </message>
    <message>
        <source>PipeWire&apos;s session manager (wireplumber) does not answer: start it anew, or log in again</source>
        <translation>Die Sitzungsverwaltung von PipeWire (wireplumber) antwortet nicht: Starten Sie sie neu, oder melden Sie sich neu an</translation>
    </message>
    <message>
        <source>This desktop shares whole displays only, no single windows</source>
        <translation>Dieser Desktop gibt nur ganze Bildschirme frei, keine einzelnen Fenster</translation>
    </message>
    <message>
        <source>The desktop refused to share the screen without asking. Its dialog may be missing (on sway: install slurp)</source>
        <translation>Der Desktop hat die Freigabe des Bildschirms ohne Rückfrage abgelehnt. Vielleicht fehlt sein Dialog (auf Sway: slurp installieren)</translation>
    </message>
    <message>
        <source>This desktop shares no displays</source>
        <translation>Dieser Desktop gibt keine Bildschirme frei</translation>
    </message>
    <message>
        <source>The desktop shares another display</source>
        <translation>Der Desktop gibt einen anderen Bildschirm frei</translation>
    </message>
    <message>
        <source>The desktop&apos;s picture of the screen cannot be read</source>
        <translation>Das Bild, das der Desktop vom Bildschirm gemacht hat, ist nicht lesbar</translation>
    </message>
    <message>
        <source>The window is not shared any more</source>
        <translation>Das Fenster ist nicht mehr freigegeben</translation>
    </message>
    <message>
        <source>The Wayland compositor does not answer</source>
        <translation>Der Wayland-Compositor antwortet nicht</translation>
    </message>
    <message>
        <source>The desktop&apos;s part that shares the screen is missing. Install xdg-desktop-portal and the portal of this desktop (xdg-desktop-portal-kde, -gnome or -wlr), then log in again.</source>
        <translation>Der Teil des Desktops, der den Bildschirm freigibt, fehlt. Installieren Sie xdg-desktop-portal und das Portal dieses Desktops (xdg-desktop-portal-kde, -gnome oder -wlr) und melden Sie sich neu an.</translation>
    </message>
    <message>
        <source>PipeWire, which carries the screen&apos;s pictures, is not running. Install pipewire and wireplumber, then log in again.</source>
        <translation>PipeWire, das die Bilder des Bildschirms überträgt, läuft nicht. Installieren Sie pipewire und wireplumber und melden Sie sich neu an.</translation>
    </message>
    <message>
        <source>Click here to stop</source>
        <translation>Zum Beenden hier klicken</translation>
    </message>
    <message>
        <source>Waiting for the desktop</source>
        <translation>Warten auf den Desktop</translation>
    </message>
    <message>
        <source>It has not said yet what may be recorded. If it asks nothing, cancel, then log out and in again.</source>
        <translation>Er hat noch nicht gesagt, was aufgenommen werden darf. Wenn er nichts fragt, brechen Sie ab und melden Sie sich neu an.</translation>
    </message>
</context>
<context>
    <name>ShelfPanel</name>
    <message>
        <source>Dismiss</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Choose project</source>
        <translation>Projekt wählen</translation>
    </message>
    <message>
        <source>Choose</source>
        <translation>Projekt</translation>
    </message>
    <message>
        <source>project</source>
        <translation>wählen</translation>
    </message>
    <message>
        <source>Retry</source>
        <translation>Erneut</translation>
    </message>
    <message>
        <source>Recovered</source>
        <translation>Gerettet</translation>
    </message>
    <message>
        <source>No projects yet. Create one in Vantrell</source>
        <translation>Noch keine Projekte. In Vantrell anlegen</translation>
    </message>
    <message>
        <source>Copy link</source>
        <translation>Link kopieren</translation>
    </message>
    <message>
        <source>Show in file manager</source>
        <translation>In der Dateiverwaltung zeigen</translation>
    </message>
    <message>
        <source>Older captures</source>
        <translation>Ältere Aufnahmen</translation>
    </message>
    <message>
        <source>Newer captures</source>
        <translation>Neuere Aufnahmen</translation>
    </message>
    <message>
        <source>Recent captures</source>
        <translation>Letzte Aufnahmen</translation>
    </message>
    <message>
        <source>%1 older</source>
        <translation>%1 ältere</translation>
    </message>
    <message>
        <source>%1 newer</source>
        <translation>%1 neuere</translation>
    </message>
</context>
</TS>
