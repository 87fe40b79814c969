<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>AccountPage</name>
    <message>
        <source>Sign in</source>
        <translation>Anmelden</translation>
    </message>
</context>
<context>
    <name>AlertsPage</name>
    <message>
        <source>&amp;Low glucose</source>
        <translation>N&amp;iedrige Glukose</translation>
    </message>
    <message>
        <source>&amp;High glucose</source>
        <translation>&amp;Hohe Glukose</translation>
    </message>
    <message>
        <source>Rapid &amp;fall</source>
        <translation>Schneller Abfa&amp;ll</translation>
    </message>
    <message>
        <source>Rapid &amp;rise</source>
        <translation>Schneller An&amp;stieg</translation>
    </message>
    <message>
        <source>No &amp;data for 15 minutes</source>
        <translation>Keine &amp;Daten seit 15 Minuten</translation>
    </message>
    <message>
        <source>Alert me with a notification and a sound:</source>
        <translation>Mit einer Benachrichtigung und einem Ton warnen bei:</translation>
    </message>
    <message>
        <source>Try now whether you would notice an alert on this computer:</source>
        <translation>Probieren Sie jetzt aus, ob Sie an diesem Computer eine Warnung bemerken würden:</translation>
    </message>
    <message>
        <source>Notifications are disabled for Tidewell.</source>
        <translation>Benachrichtigungen sind für Tidewell ausgeschaltet.</translation>
    </message>
    <message>
        <source>Enable notifications in System Settings &gt; Notifications to receive glucose alerts.</source>
        <translation>Schalten Sie die Benachrichtigungen in den Systemeinstellungen unter „Benachrichtigungen“ ein, um Glukosewarnungen zu erhalten.</translation>
    </message>
    <message>
        <source>Open notification &amp;settings</source>
        <translation>Benachrichtigun&amp;gseinstellungen öffnen</translation>
    </message>
    <message>
        <source>Did you see and hear it?</source>
        <translation>Haben Sie sie gesehen und gehört?</translation>
    </message>
    <message>
        <source>&amp;Yes</source>
        <translation>&amp;Ja</translation>
    </message>
    <message>
        <source>&amp;No</source>
        <translation>N&amp;ein</translation>
    </message>
    <message>
        <source>Alerts</source>
        <translation>Warnungen</translation>
    </message>
    <message>
        <source>Sending test alert</source>
        <translation>Testwarnung wird gesendet</translation>
    </message>
    <message>
        <source>Send &amp;test alert</source>
        <translation>&amp;Testwarnung senden</translation>
    </message>
    <message>
        <source>Send &amp;test alert again</source>
        <translation>&amp;Testwarnung erneut senden</translation>
    </message>
    <message>
        <source>Good: that is how alerts reach you.</source>
        <translation>Gut: So erreichen Warnungen Sie.</translation>
    </message>
    <message>
        <source>Nothing was found that keeps alerts away. Look whether the desktop collects notifications in a list without showing them, and whether the sound is turned up. Then send the test alert again.</source>
        <translation>Es wurde nichts gefunden, was Warnungen zurückhält. Sehen Sie nach, ob der Desktop Benachrichtigungen nur in einer Liste sammelt, ohne sie anzuzeigen, und ob der Ton laut genug ist. Senden Sie die Testwarnung dann erneut.</translation>
    </message>
    <message>
        <source>Alerts are switched off altogether. When you choose a kind here, alerts are switched on for that kind only.</source>
        <translation>Warnungen sind ganz ausgeschaltet. Wenn Sie hier eine Art wählen, werden Warnungen nur für diese Art eingeschaltet.</translation>
    </message>
</context>
<context>
    <name>Core</name>
    <message>
        <source>No update yet</source>
        <translation>Noch keine Aktualisierung</translation>
    </message>
    <message>
        <source>Last update: %1</source>
        <translation>Letzte Aktualisierung: %1</translation>
    </message>
    <message>
        <source>Next retry at %1</source>
        <translation>Nächster Versuch um %1</translation>
    </message>
    <message>
        <source>No readings yet</source>
        <translation>Noch keine Messwerte</translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>Show graph</source>
        <translation>Kurve anzeigen</translation>
    </message>
    <message>
        <source>Update available</source>
        <translation>Neue Version verfügbar</translation>
    </message>
    <message>
        <source>Reconnect</source>
        <translation>Neu verbinden</translation>
    </message>
    <message>
        <source>Sign in…</source>
        <translation>Anmelden…</translation>
    </message>
    <message>
        <source>Switch account…</source>
        <translation>Konto wechseln…</translation>
    </message>
    <message>
        <source>Show terms…</source>
        <translation>Nutzungsbedingungen anzeigen…</translation>
    </message>
    <message>
        <source>Finish setting up…</source>
        <translation>Einrichtung abschließen…</translation>
    </message>
    <message>
        <source>Tidewell cannot remember what you choose</source>
        <translation>Tidewell kann sich nicht merken, was Sie wählen</translation>
    </message>
    <message>
        <source>Tidewell cannot remember what you choose.</source>
        <translation>Tidewell kann sich nicht merken, was Sie wählen.</translation>
    </message>
    <message>
        <source>Tidewell cannot remember what you choose: %1</source>
        <translation>Tidewell kann sich nicht merken, was Sie wählen: %1</translation>
    </message>
    <message>
        <source>A snooze and accepted terms may be forgotten when Tidewell ends.</source>
        <translation>Eine Stummschaltung und angenommene Nutzungsbedingungen sind womöglich vergessen, wenn Tidewell endet.</translation>
    </message>
    <message>
        <source>Mend the permissions of the folder, or make room on the disk.</source>
        <translation>Berichtigen Sie die Zugriffsrechte des Ordners oder schaffen Sie Platz auf dem Datenträger.</translation>
    </message>
    <message>
        <source>Setting up is not finished</source>
        <translation>Die Einrichtung ist nicht abgeschlossen</translation>
    </message>
    <message>
        <source>Tidewell shows no values and sends no alerts yet.</source>
        <translation>Tidewell zeigt noch keine Werte und sendet noch keine Warnungen.</translation>
    </message>
    <message>
        <source>Choose &quot;Finish setting up…&quot; in the menu.</source>
        <translation>Wählen Sie „Einrichtung abschließen…“ im Menü.</translation>
    </message>
    <message>
        <source>Choose “Finish setting up…” in the menu.</source>
        <translation>Wählen Sie „Einrichtung abschließen…“ im Menü.</translation>
    </message>
    <message>
        <source>Setting up is not finished: no readings are fetched and no alert comes.</source>
        <translation>Die Einrichtung ist nicht abgeschlossen: Es werden keine Messwerte abgefragt, und es kommt keine Warnung.</translation>
    </message>
    <message>
        <source>The terms of use were never accepted: no readings are fetched and no alert comes.</source>
        <translation>Die Nutzungsbedingungen wurden nie angenommen: Es werden keine Messwerte abgefragt, und es kommt keine Warnung.</translation>
    </message>
    <message>
        <source>Choose “Show terms…” in the menu and accept them.</source>
        <translation>Wählen Sie „Nutzungsbedingungen anzeigen…“ im Menü und nehmen Sie sie an.</translation>
    </message>
    <message>
        <source>Insights</source>
        <translation>Auswertung</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Saved history needs attention</source>
        <translation>Beim gespeicherten Verlauf müssen Sie etwas tun</translation>
    </message>
    <message>
        <source>Snooze alerts (30 min)</source>
        <translation>Warnungen stummschalten (30 min)</translation>
    </message>
    <message>
        <source>Snooze alerts (2 hours)</source>
        <translation>Warnungen stummschalten (2 Stunden)</translation>
    </message>
    <message>
        <source>Resume alerts now</source>
        <translation>Warnungen jetzt wieder einschalten</translation>
    </message>
    <message>
        <source>No alerts (no category is selected) snoozed until %1</source>
        <translation>Keine Warnungen (keine Art ist gewählt) stumm bis %1</translation>
    </message>
    <message>
        <source>Low alerts snoozed until %1</source>
        <translation>Warnungen bei niedrigen Werten stumm bis %1</translation>
    </message>
    <message>
        <source>High alerts snoozed until %1</source>
        <translation>Warnungen bei hohen Werten stumm bis %1</translation>
    </message>
    <message>
        <source>Rapid-change alerts snoozed until %1</source>
        <translation>Warnungen bei schneller Änderung stumm bis %1</translation>
    </message>
    <message>
        <source>Low and high alerts snoozed until %1</source>
        <translation>Warnungen bei niedrigen und hohen Werten stumm bis %1</translation>
    </message>
    <message>
        <source>Low and rapid-change alerts snoozed until %1</source>
        <translation>Warnungen bei niedrigen Werten und schneller Änderung stumm bis %1</translation>
    </message>
    <message>
        <source>High and rapid-change alerts snoozed until %1</source>
        <translation>Warnungen bei hohen Werten und schneller Änderung stumm bis %1</translation>
    </message>
    <message>
        <source>Low, high and rapid-change alerts snoozed until %1</source>
        <translation>Warnungen bei niedrigen und hohen Werten und schneller Änderung stumm bis %1</translation>
    </message>
    <message>
        <source>Loading glucose…</source>
        <translation>Glukosewerte werden geladen…</translation>
    </message>
    <message>
        <source>Refreshing glucose…</source>
        <translation>Glukosewerte werden aktualisiert…</translation>
    </message>
    <message>
        <source>Signing in…</source>
        <translation>Anmeldung läuft…</translation>
    </message>
    <message>
        <source>Loading glucose</source>
        <translation>Glukosewerte werden geladen</translation>
    </message>
    <message>
        <source>Refreshing glucose</source>
        <translation>Glukosewerte werden aktualisiert</translation>
    </message>
    <message>
        <source>Signing in</source>
        <translation>Anmeldung läuft</translation>
    </message>
    <message>
        <source>1 minute</source>
        <translation>1 Minute</translation>
    </message>
    <message>
        <source>%1 minutes</source>
        <translation>%1 Minuten</translation>
    </message>
    <message>
        <source>1 hour</source>
        <translation>1 Stunde</translation>
    </message>
    <message>
        <source>%1 hours</source>
        <translation>%1 Stunden</translation>
    </message>
    <message>
        <source>1 hour and 1 minute</source>
        <translation>1 Stunde und 1 Minute</translation>
    </message>
    <message>
        <source>1 hour and %1 minutes</source>
        <translation>1 Stunde und %1 Minuten</translation>
    </message>
    <message>
        <source>%1 hours and 1 minute</source>
        <translation>%1 Stunden und 1 Minute</translation>
    </message>
    <message>
        <source>%1 hours and %2 minutes</source>
        <translation>%1 Stunden und %2 Minuten</translation>
    </message>
    <message>
        <source>1 day</source>
        <translation>1 Tag</translation>
    </message>
    <message>
        <source>%1 days</source>
        <translation>%1 Tage</translation>
    </message>
    <message>
        <source>%1 ago</source>
        <translation>vor %1</translation>
    </message>
    <message>
        <source>1 day ago</source>
        <translation>vor 1 Tag</translation>
    </message>
    <message>
        <source>%1 days ago</source>
        <translation>vor %1 Tagen</translation>
    </message>
    <message>
        <source>less than 5 minutes</source>
        <translation>weniger als 5 Minuten</translation>
    </message>
    <message>
        <source>1 day %1 h</source>
        <translation>1 Tag %1 h</translation>
    </message>
    <message>
        <source>%1 days %2 h</source>
        <translation>%1 Tage %2 h</translation>
    </message>
    <message>
        <source>%1 h</source>
        <translation>%1 h</translation>
    </message>
    <message>
        <source>%1 h %2 min</source>
        <translation>%1 h %2 min</translation>
    </message>
    <message>
        <source>%1 min</source>
        <translation>%1 min</translation>
    </message>
    <message>
        <source>%1 a day</source>
        <translation>%1 am Tag</translation>
    </message>
    <message>
        <source>Mon %1</source>
        <translation>Mo %1</translation>
    </message>
    <message>
        <source>Tue %1</source>
        <translation>Di %1</translation>
    </message>
    <message>
        <source>Wed %1</source>
        <translation>Mi %1</translation>
    </message>
    <message>
        <source>Thu %1</source>
        <translation>Do %1</translation>
    </message>
    <message>
        <source>Fri %1</source>
        <translation>Fr %1</translation>
    </message>
    <message>
        <source>Sat %1</source>
        <translation>Sa %1</translation>
    </message>
    <message>
        <source>Sun %1</source>
        <translation>So %1</translation>
    </message>
    <message>
        <source>Last reading: %1</source>
        <translation>Letzter Messwert: %1</translation>
    </message>
    <message>
        <source>No readings in the last hour</source>
        <translation>Keine Messwerte in der letzten Stunde</translation>
    </message>
    <message>
        <source>No readings in the last %1</source>
        <translation>Keine Messwerte in den letzten %1</translation>
    </message>
    <message>
        <source>%1 in %2 min</source>
        <translation>%1 in %2 min</translation>
    </message>
    <message>
        <source>Glucose graph, last %1.</source>
        <translation>Glukosekurve, letzter Zeitraum: %1.</translation>
    </message>
    <message>
        <source>1 reading in this time window.</source>
        <translation>1 Messwert in diesem Zeitfenster.</translation>
    </message>
    <message>
        <source>%1 readings in this time window.</source>
        <translation>%1 Messwerte in diesem Zeitfenster.</translation>
    </message>
    <message>
        <source>%1, %2, %3, %4.</source>
        <translation>%1, %2, %3, %4.</translation>
    </message>
    <message>
        <source>milligrams per deciliter</source>
        <translation>Milligramm pro Deziliter</translation>
    </message>
    <message>
        <source>millimoles per liter</source>
        <translation>Millimol pro Liter</translation>
    </message>
    <message>
        <source>%1 milligrams per deciliter</source>
        <translation>%1 Milligramm pro Deziliter</translation>
    </message>
    <message>
        <source>%1 millimoles per liter</source>
        <translation>%1 Millimol pro Liter</translation>
    </message>
    <message>
        <source>at or below the low threshold</source>
        <translation>am unteren Grenzwert oder darunter</translation>
    </message>
    <message>
        <source>in range</source>
        <translation>im Zielbereich</translation>
    </message>
    <message>
        <source>at or above the high threshold</source>
        <translation>am oberen Grenzwert oder darüber</translation>
    </message>
    <message>
        <source>rising quickly</source>
        <translation>schnell steigend</translation>
    </message>
    <message>
        <source>rising</source>
        <translation>steigend</translation>
    </message>
    <message>
        <source>rising slightly</source>
        <translation>leicht steigend</translation>
    </message>
    <message>
        <source>steady</source>
        <translation>gleichbleibend</translation>
    </message>
    <message>
        <source>falling slightly</source>
        <translation>leicht fallend</translation>
    </message>
    <message>
        <source>falling</source>
        <translation>fallend</translation>
    </message>
    <message>
        <source>falling quickly</source>
        <translation>schnell fallend</translation>
    </message>
    <message>
        <source>unknown trend</source>
        <translation>Trend unbekannt</translation>
    </message>
    <message>
        <source>No glucose readings available.</source>
        <translation>Keine Glukosewerte verfügbar.</translation>
    </message>
    <message>
        <source>Current glucose: %1, %2, %3.</source>
        <translation>Aktuelle Glukose: %1, %2, %3.</translation>
    </message>
    <message>
        <source>Stale glucose reading.</source>
        <translation>Veralteter Glukosewert.</translation>
    </message>
    <message>
        <source>Current glucose unavailable.</source>
        <translation>Aktuelle Glukose nicht verfügbar.</translation>
    </message>
    <message>
        <source>Last known glucose: %1.</source>
        <translation>Letzter bekannter Glukosewert: %1.</translation>
    </message>
    <message>
        <source>Trend unavailable.</source>
        <translation>Trend nicht verfügbar.</translation>
    </message>
    <message>
        <source>Last known value %1, received %2 ago.</source>
        <translation>Letzter bekannter Wert %1, Alter: %2.</translation>
    </message>
    <message>
        <source>Measured at %1, %2 ago, %3</source>
        <translation>Gemessen um %1, Alter: %2, %3</translation>
    </message>
    <message>
        <source>Waiting for the first reading.</source>
        <translation>Warten auf den ersten Messwert.</translation>
    </message>
    <message>
        <source>Shows the latest glucose reading.</source>
        <translation>Zeigt den neuesten Glukosewert.</translation>
    </message>
    <message>
        <source>Open the menu for the graph and settings.</source>
        <translation>Öffnen Sie das Menü für die Kurve und die Einstellungen.</translation>
    </message>
    <message>
        <source>Stale glucose reading</source>
        <translation>Veralteter Glukosewert</translation>
    </message>
    <message>
        <source>Last glucose reading was %1 ago.</source>
        <translation>Der letzte Glukosewert ist %1 alt.</translation>
    </message>
    <message>
        <source>Check your sensor connection and sensor app if readings do not resume.</source>
        <translation>Prüfen Sie die Verbindung zum Sensor und die Sensor-App, falls keine neuen Messwerte kommen.</translation>
    </message>
    <message>
        <source>Authentication failed</source>
        <translation>Anmeldung fehlgeschlagen</translation>
    </message>
    <message>
        <source>Unable to authenticate with %1.</source>
        <translation>Die Anmeldung bei %1 ist nicht möglich.</translation>
    </message>
    <message>
        <source>Check your username and password in Settings.</source>
        <translation>Prüfen Sie Benutzername und Passwort in den Einstellungen.</translation>
    </message>
    <message>
        <source>Authentication required</source>
        <translation>Anmeldung erforderlich</translation>
    </message>
    <message>
        <source>Cannot authenticate with %1.</source>
        <translation>Die Anmeldung bei %1 ist nicht möglich.</translation>
    </message>
    <message>
        <source>Verify your credentials in Settings.</source>
        <translation>Prüfen Sie Ihre Zugangsdaten in den Einstellungen.</translation>
    </message>
    <message>
        <source>Account locked</source>
        <translation>Konto gesperrt</translation>
    </message>
    <message>
        <source>%1 has locked the account after too many failed sign-ins.</source>
        <translation>%1 hat das Konto nach zu vielen fehlgeschlagenen Anmeldungen gesperrt.</translation>
    </message>
    <message>
        <source>Wait a while, check your username and password, then sign in again.</source>
        <translation>Warten Sie eine Weile, prüfen Sie Benutzername und Passwort, und melden Sie sich dann erneut an.</translation>
    </message>
    <message>
        <source>No internet connection available.</source>
        <translation>Keine Internetverbindung verfügbar.</translation>
    </message>
    <message>
        <source>Connect to the internet to retrieve glucose data.</source>
        <translation>Stellen Sie eine Internetverbindung her, um Glukosedaten abzurufen.</translation>
    </message>
    <message>
        <source>Unable to connect</source>
        <translation>Keine Verbindung möglich</translation>
    </message>
    <message>
        <source>Unable to connect to %1 servers.</source>
        <translation>Es ist keine Verbindung zu den Servern von %1 möglich.</translation>
    </message>
    <message>
        <source>Check your internet connection and try again.</source>
        <translation>Prüfen Sie Ihre Internetverbindung und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>An unexpected error occurred.</source>
        <translation>Ein unerwarteter Fehler ist aufgetreten.</translation>
    </message>
    <message>
        <source>An unexpected error occurred: %1</source>
        <translation>Ein unerwarteter Fehler ist aufgetreten: %1</translation>
    </message>
    <message>
        <source>The app will retry automatically.</source>
        <translation>Tidewell versucht es von selbst erneut.</translation>
    </message>
    <message>
        <source>Check Settings and ensure your glucose account is active.</source>
        <translation>Sehen Sie in den Einstellungen nach, ob Ihr Glukosekonto aktiv ist.</translation>
    </message>
    <message>
        <source>Tidewell will wait before trying again.</source>
        <translation>Tidewell wartet vor dem nächsten Versuch.</translation>
    </message>
    <message>
        <source>%1 needs attention</source>
        <translation>Bei %1 müssen Sie etwas tun</translation>
    </message>
    <message>
        <source>Resolve the issue, then choose Reconnect in Account settings.</source>
        <translation>Beheben Sie die Ursache, und wählen Sie dann „Neu verbinden“ in den Kontoeinstellungen.</translation>
    </message>
    <message>
        <source>Sign in required</source>
        <translation>Anmeldung erforderlich</translation>
    </message>
    <message>
        <source>Sign in to your glucose account to see glucose readings.</source>
        <translation>Melden Sie sich bei Ihrem Glukosekonto an, um Glukosewerte zu sehen.</translation>
    </message>
    <message>
        <source>Open Settings to enter your glucose account details.</source>
        <translation>Öffnen Sie die Einstellungen, um die Daten Ihres Glukosekontos einzugeben.</translation>
    </message>
    <message>
        <source>Sign in again, or mend the file.</source>
        <translation>Melden Sie sich erneut an oder berichtigen Sie die Datei.</translation>
    </message>
    <message>
        <source>No data available</source>
        <translation>Keine Daten verfügbar</translation>
    </message>
    <message>
        <source>No glucose readings available from %1.</source>
        <translation>Von %1 sind keine Glukosewerte verfügbar.</translation>
    </message>
    <message>
        <source>Ensure your sensor is active and readings appear in %1.</source>
        <translation>Sehen Sie nach, ob Ihr Sensor aktiv ist und Messwerte in %1 erscheinen.</translation>
    </message>
    <message>
        <source>No new data</source>
        <translation>Keine neuen Daten</translation>
    </message>
    <message>
        <source>Unable to retrieve new glucose readings from %1.</source>
        <translation>Neue Glukosewerte von %1 können nicht abgerufen werden.</translation>
    </message>
    <message>
        <source>Check your internet connection and %1 settings.</source>
        <translation>Prüfen Sie Ihre Internetverbindung und die Einstellungen von %1.</translation>
    </message>
    <message>
        <source>Clock is wrong</source>
        <translation>Die Uhr geht falsch</translation>
    </message>
    <message>
        <source>The newest glucose reading is dated %1 in the future.</source>
        <translation>Der neueste Glukosewert liegt %1 in der Zukunft.</translation>
    </message>
    <message>
        <source>Check the date and time of this computer and of the phone with the sensor.</source>
        <translation>Prüfen Sie Datum und Uhrzeit dieses Computers und des Telefons mit dem Sensor.</translation>
    </message>
    <message>
        <source>Terms of use</source>
        <translation>Nutzungsbedingungen</translation>
    </message>
    <message>
        <source>Tidewell shows no readings before you have accepted its terms of use.</source>
        <translation>Tidewell zeigt keine Messwerte, bevor Sie die Nutzungsbedingungen angenommen haben.</translation>
    </message>
    <message>
        <source>Read and accept them: choose &quot;Show terms…&quot; in the menu.</source>
        <translation>Lesen Sie sie und nehmen Sie sie an: Wählen Sie „Nutzungsbedingungen anzeigen…“ im Menü.</translation>
    </message>
    <message>
        <source>Password not available</source>
        <translation>Passwort nicht verfügbar</translation>
    </message>
    <message>
        <source>The password of the account is not in the keyring.</source>
        <translation>Das Passwort des Kontos ist nicht im Schlüsselbund.</translation>
    </message>
    <message>
        <source>Unlock your keyring, or sign in again.</source>
        <translation>Entsperren Sie den Schlüsselbund oder melden Sie sich erneut an.</translation>
    </message>
    <message>
        <source>Invalid %1 URL</source>
        <translation>Ungültige Adresse: %1</translation>
    </message>
    <message>
        <source>Authentication failed: %1</source>
        <translation>Anmeldung fehlgeschlagen: %1</translation>
    </message>
    <message>
        <source>Login failed: %1</source>
        <translation>Anmeldung fehlgeschlagen: %1</translation>
    </message>
    <message>
        <source>Unable to process server response: %1</source>
        <translation>Die Antwort des Servers kann nicht verarbeitet werden: %1</translation>
    </message>
    <message>
        <source>Dexcom server error (%1)</source>
        <translation>Fehler des Dexcom-Servers (%1)</translation>
    </message>
    <message>
        <source>Invalid region</source>
        <translation>Ungültige Region</translation>
    </message>
    <message>
        <source>Session expired</source>
        <translation>Sitzung abgelaufen</translation>
    </message>
    <message>
        <source>No glucose readings available</source>
        <translation>Keine Glukosewerte verfügbar</translation>
    </message>
    <message>
        <source>Invalid response from server</source>
        <translation>Ungültige Antwort des Servers</translation>
    </message>
    <message>
        <source>Please check your credentials.</source>
        <translation>Bitte prüfen Sie Ihre Zugangsdaten.</translation>
    </message>
    <message>
        <source>Unable to start a Dexcom session.</source>
        <translation>Eine Sitzung bei Dexcom kann nicht begonnen werden.</translation>
    </message>
    <message>
        <source>Username is required</source>
        <translation>Der Benutzername fehlt</translation>
    </message>
    <message>
        <source>Password is required</source>
        <translation>Das Passwort fehlt</translation>
    </message>
    <message>
        <source>Expected an account id</source>
        <translation>Eine Kontokennung wurde erwartet</translation>
    </message>
    <message>
        <source>Expected a session id</source>
        <translation>Eine Sitzungskennung wurde erwartet</translation>
    </message>
    <message>
        <source>Expected an array of glucose readings</source>
        <translation>Eine Liste von Glukosewerten wurde erwartet</translation>
    </message>
    <message>
        <source>LibreLinkUp is limiting requests. Tidewell will wait before trying again.</source>
        <translation>LibreLinkUp begrenzt die Anfragen. Tidewell wartet vor dem nächsten Versuch.</translation>
    </message>
    <message>
        <source>LibreLinkUp is unavailable (%1). Try again later.</source>
        <translation>LibreLinkUp ist nicht verfügbar (%1). Versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>LibreLinkUp could not find a supported account region. Check the region in Settings.</source>
        <translation>LibreLinkUp hat keine unterstützte Region des Kontos gefunden. Prüfen Sie die Region in den Einstellungen.</translation>
    </message>
    <message>
        <source>Unable to sign in to LibreLinkUp. Check your email and password in the LibreLinkUp app.</source>
        <translation>Die Anmeldung bei LibreLinkUp ist nicht möglich. Prüfen Sie E-Mail-Adresse und Passwort in der LibreLinkUp-App.</translation>
    </message>
    <message>
        <source>Your LibreLinkUp session has expired. Please sign in again.</source>
        <translation>Ihre Sitzung bei LibreLinkUp ist abgelaufen. Bitte melden Sie sich erneut an.</translation>
    </message>
    <message>
        <source>Open the LibreLinkUp app and review its updated terms or privacy notice, then try again.</source>
        <translation>Öffnen Sie die LibreLinkUp-App, sehen Sie sich die neuen Nutzungsbedingungen oder Datenschutzhinweise an, und versuchen Sie es dann erneut.</translation>
    </message>
    <message>
        <source>Open the LibreLinkUp app and complete the account setup shown there, then try again.</source>
        <translation>Öffnen Sie die LibreLinkUp-App, schließen Sie die dort gezeigte Einrichtung des Kontos ab, und versuchen Sie es dann erneut.</translation>
    </message>
    <message>
        <source>LibreLinkUp requires a newer connection version. Check for an update to Tidewell.</source>
        <translation>LibreLinkUp verlangt eine neuere Version der Verbindung. Sehen Sie nach, ob es eine neue Version von Tidewell gibt.</translation>
    </message>
    <message>
        <source>No LibreLinkUp connections were found. Accept a sharing invitation in the LibreLinkUp app first.</source>
        <translation>Es wurden keine LibreLinkUp-Verbindungen gefunden. Nehmen Sie zuerst eine Einladung in der LibreLinkUp-App an.</translation>
    </message>
    <message>
        <source>Select the person whose readings you want to display in Settings.</source>
        <translation>Wählen Sie in den Einstellungen die Person, deren Messwerte angezeigt werden sollen.</translation>
    </message>
    <message>
        <source>The selected LibreLinkUp connection is no longer available. Check sharing in LibreLinkUp and select a connection in Settings.</source>
        <translation>Die gewählte LibreLinkUp-Verbindung ist nicht mehr verfügbar. Prüfen Sie das Teilen in LibreLinkUp, und wählen Sie in den Einstellungen eine Verbindung.</translation>
    </message>
    <message>
        <source>No Libre glucose readings are available. Check that readings appear in the LibreLinkUp app.</source>
        <translation>Es sind keine Libre-Glukosewerte verfügbar. Sehen Sie nach, ob Messwerte in der LibreLinkUp-App erscheinen.</translation>
    </message>
    <message>
        <source>LibreLinkUp returned an unexpected response. Try again later.</source>
        <translation>LibreLinkUp hat unerwartet geantwortet. Versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>LibreLinkUp returned a reading with an invalid value or timestamp.</source>
        <translation>LibreLinkUp hat einen Messwert mit ungültigem Wert oder ungültiger Zeit geschickt.</translation>
    </message>
    <message>
        <source>The address cannot be used.</source>
        <translation>Die Adresse kann nicht verwendet werden.</translation>
    </message>
    <message>
        <source>The server&apos;s name could not be found.</source>
        <translation>Der Name des Servers wurde nicht gefunden.</translation>
    </message>
    <message>
        <source>Could not connect to the server.</source>
        <translation>Es konnte keine Verbindung zum Server hergestellt werden.</translation>
    </message>
    <message>
        <source>No secure connection to the server could be made.</source>
        <translation>Es konnte keine sichere Verbindung zum Server hergestellt werden.</translation>
    </message>
    <message>
        <source>The request timed out.</source>
        <translation>Die Anfrage hat zu lange gedauert.</translation>
    </message>
    <message>
        <source>The network connection was lost.</source>
        <translation>Die Netzwerkverbindung ist abgebrochen.</translation>
    </message>
    <message>
        <source>The server&apos;s answer was too large.</source>
        <translation>Die Antwort des Servers war zu groß.</translation>
    </message>
    <message>
        <source>The server redirected to an address that is not trusted.</source>
        <translation>Der Server hat an eine Adresse verwiesen, der nicht vertraut wird.</translation>
    </message>
    <message>
        <source>The server&apos;s answer could not be understood.</source>
        <translation>Die Antwort des Servers war nicht zu verstehen.</translation>
    </message>
    <message>
        <source>Invalid glucose reading format</source>
        <translation>Ungültige Form eines Glukosewerts</translation>
    </message>
    <message>
        <source>Missing glucose value</source>
        <translation>Der Glukosewert fehlt</translation>
    </message>
    <message>
        <source>Missing trend information</source>
        <translation>Der Trend fehlt</translation>
    </message>
    <message>
        <source>Missing or invalid glucose reading timestamp</source>
        <translation>Die Zeit eines Glukosewerts fehlt oder ist ungültig</translation>
    </message>
    <message>
        <source>Sign in again, since there is no password: %1.</source>
        <translation>Melden Sie sich erneut an, denn es gibt kein Passwort: %1.</translation>
    </message>
    <message>
        <source>The password could not be read: %1.</source>
        <translation>Das Passwort konnte nicht gelesen werden: %1.</translation>
    </message>
    <message>
        <source>The password could not be stored: %1.</source>
        <translation>Das Passwort konnte nicht gespeichert werden: %1.</translation>
    </message>
    <message>
        <source>The password of the former account could not be removed: %1.</source>
        <translation>Das Passwort des früheren Kontos konnte nicht entfernt werden: %1.</translation>
    </message>
    <message>
        <source>The password stands in clear text in %1 and could not be moved: %2.</source>
        <translation>Das Passwort steht im Klartext in %1 und konnte nicht verschoben werden: %2.</translation>
    </message>
    <message>
        <source>The configuration file %1 cannot be read: %2.</source>
        <translation>Die Konfigurationsdatei %1 kann nicht gelesen werden: %2.</translation>
    </message>
    <message>
        <source>The configuration file %1 is damaged and was left as it is: %2.</source>
        <translation>Die Konfigurationsdatei %1 ist beschädigt und blieb unverändert: %2.</translation>
    </message>
    <message>
        <source>The configuration could not be saved: a text in it is not valid UTF-8, or a number not finite.</source>
        <translation>Die Konfiguration konnte nicht gespeichert werden: Ein Text darin ist kein gültiges UTF-8, oder eine Zahl ist nicht endlich.</translation>
    </message>
    <message>
        <source>The configuration could not be saved to %1: %2.</source>
        <translation>Die Konfiguration konnte nicht in %1 gespeichert werden: %2.</translation>
    </message>
    <message>
        <source>Keychain error: %1</source>
        <translation>Fehler des Schlüsselbunds: %1</translation>
    </message>
    <message>
        <source>Invalid configuration data</source>
        <translation>Ungültige Konfigurationsdaten</translation>
    </message>
    <message>
        <source>the secret store answered</source>
        <translation>der Schlüsselbund hat geantwortet</translation>
    </message>
    <message>
        <source>the secret store holds nothing for this account</source>
        <translation>der Schlüsselbund enthält nichts für dieses Konto</translation>
    </message>
    <message>
        <source>what the secret store holds is damaged</source>
        <translation>der Eintrag im Schlüsselbund ist beschädigt</translation>
    </message>
    <message>
        <source>the file of the secret store is not ours alone</source>
        <translation>auf die Datei der Geheimnisse haben auch andere Zugriff</translation>
    </message>
    <message>
        <source>no secret store answers</source>
        <translation>kein Schlüsselbund antwortet</translation>
    </message>
    <message>
        <source>the secret store is locked</source>
        <translation>der Schlüsselbund ist gesperrt</translation>
    </message>
    <message>
        <source>unlocking the secret store was cancelled</source>
        <translation>das Entsperren des Schlüsselbunds wurde abgebrochen</translation>
    </message>
    <message>
        <source>the file of the secret store cannot be read or written</source>
        <translation>die Datei der Geheimnisse kann nicht gelesen oder geschrieben werden</translation>
    </message>
    <message>
        <source>the secret store failed with status %1</source>
        <translation>der Schlüsselbund meldet den Fehler %1</translation>
    </message>
    <message>
        <source>Low glucose alert</source>
        <translation>Warnung: Glukose niedrig</translation>
    </message>
    <message>
        <source>%1 (low threshold %2)</source>
        <translation>%1 (unterer Grenzwert %2)</translation>
    </message>
    <message>
        <source>High glucose alert</source>
        <translation>Warnung: Glukose hoch</translation>
    </message>
    <message>
        <source>%1 (high threshold %2)</source>
        <translation>%1 (oberer Grenzwert %2)</translation>
    </message>
    <message>
        <source>Rapid glucose drop</source>
        <translation>Glukose fällt schnell</translation>
    </message>
    <message>
        <source>%1. Glucose is falling quickly.</source>
        <translation>%1. Die Glukose fällt schnell.</translation>
    </message>
    <message>
        <source>Rapid glucose rise</source>
        <translation>Glukose steigt schnell</translation>
    </message>
    <message>
        <source>%1. Glucose is rising quickly.</source>
        <translation>%1. Die Glukose steigt schnell.</translation>
    </message>
    <message>
        <source>No glucose data</source>
        <translation>Keine Glukosedaten</translation>
    </message>
    <message>
        <source>No new reading has come.</source>
        <translation>Es ist kein neuer Messwert gekommen.</translation>
    </message>
    <message>
        <source>No reading that alerts can go by since %1.</source>
        <translation>Seit %1 ist kein Messwert gekommen, nach dem gewarnt werden kann.</translation>
    </message>
    <message>
        <source>No reading since Tidewell started at %1.</source>
        <translation>Kein Messwert, seit Tidewell um %1 gestartet ist.</translation>
    </message>
    <message>
        <source>Last reading at %1, %2 ago.</source>
        <translation>Letzter Messwert um %1, Alter: %2.</translation>
    </message>
    <message>
        <source>No reading since %1.</source>
        <translation>Kein Messwert seit %1.</translation>
    </message>
    <message>
        <source>Tidewell test alert</source>
        <translation>Testwarnung von Tidewell</translation>
    </message>
    <message>
        <source>Notifications are configured correctly.</source>
        <translation>Benachrichtigungen sind richtig eingerichtet.</translation>
    </message>
    <message>
        <source>Notifications are disabled.</source>
        <translation>Benachrichtigungen sind ausgeschaltet.</translation>
    </message>
    <message>
        <source>Test alert sent.</source>
        <translation>Testwarnung gesendet.</translation>
    </message>
    <message>
        <source>Test alert could not be sent.</source>
        <translation>Die Testwarnung konnte nicht gesendet werden.</translation>
    </message>
    <message>
        <source>The notification centre failed.</source>
        <translation>Die Benachrichtigungszentrale ist ausgefallen.</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Anzeigen</translation>
    </message>
    <message>
        <source>Snooze 30 min</source>
        <translation>30 min stummschalten</translation>
    </message>
    <message>
        <source>The notification server does not answer: alerts are not shown.</source>
        <translation>Der Benachrichtigungsdienst antwortet nicht: Warnungen werden nicht angezeigt.</translation>
    </message>
    <message>
        <source>Restart it, or log out of the desktop and in again.</source>
        <translation>Starten Sie den Benachrichtigungsdienst neu, oder melden Sie sich vom Desktop ab und wieder an.</translation>
    </message>
    <message>
        <source>There is no notification server: alerts are not shown.</source>
        <translation>Es gibt keinen Benachrichtigungsdienst: Warnungen werden nicht angezeigt.</translation>
    </message>
    <message>
        <source>Start one: desktops bring their own, elsewhere install dunst or mako and start it with the session.</source>
        <translation>Starten Sie einen: Desktops bringen ihren eigenen mit; sonst installieren Sie dunst oder mako und starten ihn mit der Sitzung.</translation>
    </message>
    <message>
        <source>The notification server</source>
        <translation>Der Benachrichtigungsdienst</translation>
    </message>
    <message>
        <source>%1 did not show the last alert.</source>
        <translation>Die letzte Warnung wurde nicht angezeigt (%1).</translation>
    </message>
    <message>
        <source>%1 answers and shows notifications.</source>
        <translation>Benachrichtigungen werden angezeigt (%1).</translation>
    </message>
    <message>
        <source>“Do not disturb” is on: alerts may be neither shown nor heard.</source>
        <translation>„Nicht stören“ ist eingeschaltet: Warnungen werden vielleicht weder angezeigt noch gehört.</translation>
    </message>
    <message>
        <source>Switch it off in the desktop&apos;s notification settings.</source>
        <translation>Schalten Sie es in den Benachrichtigungseinstellungen des Desktops aus.</translation>
    </message>
    <message>
        <source>“Do not disturb” is off.</source>
        <translation>„Nicht stören“ ist ausgeschaltet.</translation>
    </message>
    <message>
        <source>Whether there is a sound output cannot be told.</source>
        <translation>Ob es eine Tonausgabe gibt, lässt sich nicht feststellen.</translation>
    </message>
    <message>
        <source>There is no sound output: alerts are silent.</source>
        <translation>Es gibt keine Tonausgabe: Warnungen sind stumm.</translation>
    </message>
    <message>
        <source>There is a sound output.</source>
        <translation>Es gibt eine Tonausgabe.</translation>
    </message>
    <message>
        <source>The sound is muted: alerts are silent.</source>
        <translation>Der Ton ist stummgeschaltet: Warnungen sind stumm.</translation>
    </message>
    <message>
        <source>The volume is at zero: alerts are silent.</source>
        <translation>Die Lautstärke steht auf null: Warnungen sind stumm.</translation>
    </message>
    <message>
        <source>The volume is at %1 %: an alert is easily missed.</source>
        <translation>Die Lautstärke steht auf %1 %: Eine Warnung ist leicht zu überhören.</translation>
    </message>
    <message>
        <source>The volume is at %1 %.</source>
        <translation>Die Lautstärke steht auf %1 %.</translation>
    </message>
    <message>
        <source>%1 plays the alert sounds.</source>
        <translation>Die Warntöne werden abgespielt (%1).</translation>
    </message>
    <message>
        <source>The desktop&apos;s alert sounds are not installed: alerts are silent.</source>
        <translation>Die Warntöne des Desktops sind nicht installiert: Warnungen sind stumm.</translation>
    </message>
    <message>
        <source>Install the package sound-theme-freedesktop.</source>
        <translation>Installieren Sie das Paket sound-theme-freedesktop.</translation>
    </message>
    <message>
        <source>The sound of the last alert could not be played.</source>
        <translation>Der Ton der letzten Warnung konnte nicht abgespielt werden.</translation>
    </message>
    <message>
        <source>The alert sounds are installed.</source>
        <translation>Die Warntöne sind installiert.</translation>
    </message>
    <message>
        <source>The glucose service cannot be reached.</source>
        <translation>Der Glukosedienst ist nicht erreichbar.</translation>
    </message>
    <message>
        <source>Check the internet connection; Tidewell tries again by itself.</source>
        <translation>Prüfen Sie die Internetverbindung; Tidewell versucht es von selbst erneut.</translation>
    </message>
    <message>
        <source>The service refuses the user name or the password.</source>
        <translation>Der Dienst weist den Benutzernamen oder das Passwort zurück.</translation>
    </message>
    <message>
        <source>The service has locked the account after too many failed sign-ins.</source>
        <translation>Der Dienst hat das Konto nach zu vielen fehlgeschlagenen Anmeldungen gesperrt.</translation>
    </message>
    <message>
        <source>The session has ended, and a new sign-in did not help.</source>
        <translation>Die Sitzung ist zu Ende, und eine neue Anmeldung hat nicht geholfen.</translation>
    </message>
    <message>
        <source>The service asks Tidewell to wait.</source>
        <translation>Der Dienst bittet Tidewell zu warten.</translation>
    </message>
    <message>
        <source>Wait: Tidewell asks again by itself. Fewer programs on one account help.</source>
        <translation>Warten Sie: Tidewell fragt von selbst erneut. Es hilft, wenn weniger Programme dasselbe Konto benutzen.</translation>
    </message>
    <message>
        <source>The service has no readings.</source>
        <translation>Der Dienst hat keine Messwerte.</translation>
    </message>
    <message>
        <source>See that the sensor is active and that its readings appear in the sharing app.</source>
        <translation>Sehen Sie nach, ob der Sensor aktiv ist und seine Messwerte in der App erscheinen, mit der sie geteilt werden.</translation>
    </message>
    <message>
        <source>The service answers with an error.</source>
        <translation>Der Dienst antwortet mit einem Fehler.</translation>
    </message>
    <message>
        <source>The service answers with an error: %1</source>
        <translation>Der Dienst antwortet mit einem Fehler: %1</translation>
    </message>
    <message>
        <source>Wait: Tidewell asks again by itself. If it lasts, check the account.</source>
        <translation>Warten Sie: Tidewell fragt von selbst erneut. Hält es an, prüfen Sie das Konto.</translation>
    </message>
    <message>
        <source>No glucose account is signed in.</source>
        <translation>Es ist kein Glukosekonto angemeldet.</translation>
    </message>
    <message>
        <source>The account is signed in, and the service answers.</source>
        <translation>Das Konto ist angemeldet, und der Dienst antwortet.</translation>
    </message>
    <message>
        <source>No reading has come yet.</source>
        <translation>Es ist noch kein Messwert gekommen.</translation>
    </message>
    <message>
        <source>Wait a few minutes, then look again.</source>
        <translation>Warten Sie einige Minuten, und sehen Sie dann erneut nach.</translation>
    </message>
    <message>
        <source>The newest reading is less than a minute old.</source>
        <translation>Der neueste Messwert ist weniger als eine Minute alt.</translation>
    </message>
    <message>
        <source>The newest reading is %1 old.</source>
        <translation>Der neueste Messwert ist %1 alt.</translation>
    </message>
    <message>
        <source>The newest reading is dated %1 in the future: it raises no alert.</source>
        <translation>Der neueste Messwert liegt %1 in der Zukunft: Er löst keine Warnung aus.</translation>
    </message>
    <message>
        <source>The newest reading is %1 old: it raises no alert any more.</source>
        <translation>Der neueste Messwert ist %1 alt: Er löst keine Warnung mehr aus.</translation>
    </message>
    <message>
        <source>There has been no reading for %1: no alert comes.</source>
        <translation>Zeit ohne Messwert: %1. Es kommt keine Warnung.</translation>
    </message>
    <message>
        <source>See that the sensor is active, that the phone has a network, and that its readings appear in the sharing app.</source>
        <translation>Sehen Sie nach, ob der Sensor aktiv ist, das Telefon ein Netz hat und die Messwerte in der App erscheinen, mit der sie geteilt werden.</translation>
    </message>
    <message>
        <source>Low alerts come at %1 and below.</source>
        <translation>Bei %1 und darunter wird gewarnt.</translation>
    </message>
    <message>
        <source>Rapid-fall alerts come with each fast fall.</source>
        <translation>Bei jedem schnellen Abfall wird gewarnt.</translation>
    </message>
    <message>
        <source>High alerts come at %1 and above.</source>
        <translation>Bei %1 und darüber wird gewarnt.</translation>
    </message>
    <message>
        <source>Rapid-rise alerts come with a fast rise.</source>
        <translation>Bei schnellem Anstieg wird gewarnt.</translation>
    </message>
    <message>
        <source>Missing-data alerts come when there has been no reading for 15 minutes.</source>
        <translation>Wenn seit 15 Minuten kein Messwert gekommen ist, wird gewarnt.</translation>
    </message>
    <message>
        <source>Low alerts are off.</source>
        <translation>Warnungen bei niedrigen Werten sind ausgeschaltet.</translation>
    </message>
    <message>
        <source>Rapid-fall alerts are off.</source>
        <translation>Warnungen bei schnellem Abfall sind ausgeschaltet.</translation>
    </message>
    <message>
        <source>High alerts are off.</source>
        <translation>Warnungen bei hohen Werten sind ausgeschaltet.</translation>
    </message>
    <message>
        <source>Rapid-rise alerts are off.</source>
        <translation>Warnungen bei schnellem Anstieg sind ausgeschaltet.</translation>
    </message>
    <message>
        <source>Missing-data alerts are off.</source>
        <translation>Warnungen bei fehlenden Daten sind ausgeschaltet.</translation>
    </message>
    <message>
        <source>The low threshold (%1) is not below the high one (%2).</source>
        <translation>Der untere Grenzwert (%1) liegt nicht unter dem oberen (%2).</translation>
    </message>
    <message>
        <source>Quiet hours are off.</source>
        <translation>Die Ruhezeit ist ausgeschaltet.</translation>
    </message>
    <message>
        <source>Quiet hours last all day: only lows are told.</source>
        <translation>Die Ruhezeit dauert den ganzen Tag: Nur niedrige Werte werden gemeldet.</translation>
    </message>
    <message>
        <source>Quiet hours last all day: no alert comes.</source>
        <translation>Die Ruhezeit dauert den ganzen Tag: Es kommt keine Warnung.</translation>
    </message>
    <message>
        <source>Quiet hours from %1 to %2: now only lows are told.</source>
        <translation>Ruhezeit von %1 bis %2: Jetzt werden nur niedrige Werte gemeldet.</translation>
    </message>
    <message>
        <source>Nothing to do if that is meant so.</source>
        <translation>Wenn das so gewollt ist, ist nichts zu tun.</translation>
    </message>
    <message>
        <source>Quiet hours from %1 to %2: now no alert comes, not even for a low.</source>
        <translation>Ruhezeit von %1 bis %2: Jetzt kommt keine Warnung, auch nicht bei einem niedrigen Wert.</translation>
    </message>
    <message>
        <source>Quiet hours from %1 to %2: no alert comes then, not even for a low.</source>
        <translation>Ruhezeit von %1 bis %2: Dann kommt keine Warnung, auch nicht bei einem niedrigen Wert.</translation>
    </message>
    <message>
        <source>Quiet hours from %1 to %2 let lows through.</source>
        <translation>Die Ruhezeit von %1 bis %2 lässt niedrige Werte durch.</translation>
    </message>
    <message>
        <source>Alerts are not snoozed.</source>
        <translation>Warnungen sind nicht stummgeschaltet.</translation>
    </message>
    <message>
        <source>Tidewell is running.</source>
        <translation>Tidewell läuft.</translation>
    </message>
    <message>
        <source>Tidewell is not running: nobody watches for alerts.</source>
        <translation>Tidewell läuft nicht: Es kann nicht warnen.</translation>
    </message>
    <message>
        <source>Alerts are on.</source>
        <translation>Warnungen sind eingeschaltet.</translation>
    </message>
    <message>
        <source>Alerts are off.</source>
        <translation>Warnungen sind ausgeschaltet.</translation>
    </message>
    <message>
        <source>The computer suspends itself after %1 without use: asleep, it tells nothing.</source>
        <translation>Der Computer geht nach %1 ohne Benutzung in Bereitschaft: Dann meldet er nichts.</translation>
    </message>
    <message>
        <source>Switch automatic suspend off in the desktop&apos;s power settings.</source>
        <translation>Schalten Sie die automatische Bereitschaft in den Energieeinstellungen des Desktops aus.</translation>
    </message>
    <message>
        <source>Alerts are off: a low is not announced.</source>
        <translation>Warnungen sind ausgeschaltet: Ein niedriger Wert wird nicht gemeldet.</translation>
    </message>
    <message>
        <source>Low alerts are off: a low is not announced.</source>
        <translation>Warnungen bei niedrigen Werten sind ausgeschaltet: Ein niedriger Wert wird nicht gemeldet.</translation>
    </message>
    <message>
        <source>Low alerts are snoozed until %1.</source>
        <translation>Warnungen bei niedrigen Werten sind bis %1 stummgeschaltet.</translation>
    </message>
    <message>
        <source>Quiet hours last all day: a low is not announced.</source>
        <translation>Die Ruhezeit dauert den ganzen Tag: Ein niedriger Wert wird nicht gemeldet.</translation>
    </message>
    <message>
        <source>Quiet hours from %1 to %2: a low is not announced then.</source>
        <translation>Ruhezeit von %1 bis %2: Ein niedriger Wert wird dann nicht gemeldet.</translation>
    </message>
    <message>
        <source>Saved history settings could not be read. History collection is paused.</source>
        <translation>Die Einstellungen des gespeicherten Verlaufs konnten nicht gelesen werden. Das Speichern ist angehalten.</translation>
    </message>
    <message>
        <source>Choose either 30 or 90 days of saved history.</source>
        <translation>Wählen Sie 30 oder 90 Tage gespeicherten Verlauf.</translation>
    </message>
    <message>
        <source>Sign in to enable saved history.</source>
        <translation>Melden Sie sich an, um den Verlauf zu speichern.</translation>
    </message>
    <message>
        <source>The saved history encryption key is unavailable. Existing history has been preserved.</source>
        <translation>Der Schlüssel des gespeicherten Verlaufs ist nicht verfügbar. Der vorhandene Verlauf bleibt erhalten.</translation>
    </message>
    <message>
        <source>Saved history could not access macOS Keychain. Try again after unlocking your Mac.</source>
        <translation>Der gespeicherte Verlauf hat keinen Zugriff auf den Schlüsselbund. Entsperren Sie ihn, und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>Saved history could not be decrypted or read. Existing files have been preserved.</source>
        <translation>Der gespeicherte Verlauf konnte nicht entschlüsselt oder gelesen werden. Die vorhandenen Dateien bleiben erhalten.</translation>
    </message>
    <message>
        <source>Saved history could not be updated on this Mac. Live monitoring is unaffected.</source>
        <translation>Der gespeicherte Verlauf konnte auf diesem Computer nicht fortgeschrieben werden. Die laufende Anzeige ist davon nicht betroffen.</translation>
    </message>
    <message>
        <source>History saving is off, but deletion is incomplete. Tidewell will retry cleanup; you can also try deleting again.</source>
        <translation>Das Speichern ist ausgeschaltet, aber das Löschen ist unvollständig. Tidewell versucht es erneut; Sie können auch selbst noch einmal löschen.</translation>
    </message>
    <message>
        <source>Loading history…</source>
        <translation>Verlauf wird geladen…</translation>
    </message>
    <message>
        <source>Calculating insights…</source>
        <translation>Auswertung wird berechnet…</translation>
    </message>
    <message>
        <source>History unavailable</source>
        <translation>Verlauf nicht verfügbar</translation>
    </message>
    <message>
        <source>Your saved history could not be read. You can try again or manage it in Insights settings.</source>
        <translation>Ihr gespeicherter Verlauf konnte nicht gelesen werden. Sie können es erneut versuchen oder ihn in den Einstellungen der Auswertung verwalten.</translation>
    </message>
    <message>
        <source>No readings in this period</source>
        <translation>Keine Messwerte in diesem Zeitraum</translation>
    </message>
    <message>
        <source>Mean glucose weighted by observed time over the selected period.</source>
        <translation>Mittlere Glukose im gewählten Zeitraum, nach erfasster Zeit gewichtet.</translation>
    </message>
    <message>
        <source>Spread of glucose readings around the average, weighted by observed time.</source>
        <translation>Streuung der Glukosewerte um den Mittelwert, nach erfasster Zeit gewichtet.</translation>
    </message>
    <message>
        <source>Share of observed time. Ranges are fixed and separate from your alert thresholds.</source>
        <translation>Anteil an der erfassten Zeit. Die Bereiche stehen fest und sind unabhängig von Ihren Grenzwerten für Warnungen.</translation>
    </message>
    <message>
        <source>Not a lab HbA1c result</source>
        <translation>Kein HbA1c-Laborwert</translation>
    </message>
    <message>
        <source>Needs saved readings</source>
        <translation>Benötigt gespeicherte Messwerte</translation>
    </message>
    <message>
        <source>Needs 14 days of history</source>
        <translation>Benötigt 14 Tage Verlauf</translation>
    </message>
    <message>
        <source>Needs a 14-day period</source>
        <translation>Benötigt einen Zeitraum von 14 Tagen</translation>
    </message>
    <message>
        <source>Needs 70% coverage</source>
        <translation>Benötigt 70 % Abdeckung</translation>
    </message>
    <message>
        <source>%1 × mean glucose in %2</source>
        <translation>%1 × mittlere Glukose in %2</translation>
    </message>
    <message>
        <source>GMI needs saved readings, 14 days of history, and at least 70% collected coverage.</source>
        <translation>Der GMI benötigt gespeicherte Messwerte, 14 Tage Verlauf und Messwerte für mindestens 70 % der Zeit.</translation>
    </message>
    <message>
        <source>Choose a period of at least 14 days.</source>
        <translation>Wählen Sie einen Zeitraum von mindestens 14 Tagen.</translation>
    </message>
    <message>
        <source>Available after 14 days of history with at least 70% collected coverage.</source>
        <translation>Verfügbar nach 14 Tagen Verlauf mit Messwerten für mindestens 70 % der Zeit.</translation>
    </message>
    <message>
        <source>below %1</source>
        <translation>unter %1</translation>
    </message>
    <message>
        <source>%1 to below %2</source>
        <translation>%1 bis unter %2</translation>
    </message>
    <message>
        <source>%1 to %2</source>
        <translation>%1 bis %2</translation>
    </message>
    <message>
        <source>above %1 to %2</source>
        <translation>über %1 bis %2</translation>
    </message>
    <message>
        <source>above %1</source>
        <translation>über %1</translation>
    </message>
    <message>
        <source>Very low</source>
        <translation>Sehr niedrig</translation>
    </message>
    <message>
        <source>Low</source>
        <translation>Niedrig</translation>
    </message>
    <message>
        <source>In range</source>
        <translation>Im Zielbereich</translation>
    </message>
    <message>
        <source>High</source>
        <translation>Hoch</translation>
    </message>
    <message>
        <source>Very high</source>
        <translation>Sehr hoch</translation>
    </message>
    <message>
        <source>How the profile is built</source>
        <translation>Wie das Profil entsteht</translation>
    </message>
    <message>
        <source>The profile combines every day in the selected period into a single 24-hour day. The line shows the median (middle value) for each time of day, the darker band covers the middle 50%, and the lighter band covers the middle 90%, after weighting readings by the time they represent. Hover over the chart, or click to keep a time selected, to see its values. The green shading marks the %1–%2 %3 target range. Times of day with readings from fewer than %4 different days are left blank.</source>
        <translation>Das Profil fasst alle Tage des gewählten Zeitraums zu einem einzigen Tag von 24 Stunden zusammen. Die Linie zeigt den Median (mittleren Wert) für jede Tageszeit, das dunklere Band die mittleren 50 % und das hellere Band die mittleren 90 %, wobei Messwerte nach der Zeit gewichtet sind, für die sie stehen. Fahren Sie mit der Maus über das Diagramm, dann sehen Sie die Werte; ein Klick hält eine Zeit fest. Die grüne Fläche ist der Zielbereich von %1–%2 %3. Tageszeiten mit Messwerten von weniger als %4 verschiedenen Tagen bleiben leer.</translation>
    </message>
    <message>
        <source>Readings are grouped into 15-minute intervals using your Mac’s current time zone, and each interval needs readings from at least %1 different dates. The bands show the 25th–75th and 5th–95th percentiles. Equally weighted Dexcom readings use type-7 interpolation; Libre readings use the weighted distribution to account for their different sampling intervals. Curves are smoothed between intervals for display only: the values shown on hover are unchanged, and gaps are never filled. Repeated clock times during daylight saving changes share an interval.</source>
        <translation>Messwerte werden in der jetzigen Zeitzone Ihres Computers zu Abschnitten von 15 Minuten zusammengefasst, und jeder Abschnitt braucht Messwerte von mindestens %1 verschiedenen Tagen. Die Bänder zeigen das 25. bis 75. und das 5. bis 95. Perzentil. Gleich gewichtete Dexcom-Werte verwenden die Interpolation vom Typ 7; Libre-Werte verwenden die gewichtete Verteilung, um ihren unterschiedlichen Messabständen gerecht zu werden. Kurven werden zwischen den Abschnitten nur für die Anzeige geglättet: Die beim Darüberfahren gezeigten Werte bleiben unverändert, und Lücken werden nie gefüllt. Uhrzeiten, die bei der Zeitumstellung doppelt vorkommen, teilen sich einen Abschnitt.</translation>
    </message>
    <message>
        <source>Early insights. Overnight readings are often missing; patterns may change as more history is saved.</source>
        <translation>Vorläufige Auswertung. Nächtliche Messwerte fehlen oft; Muster können sich ändern, wenn mehr Verlauf gespeichert ist.</translation>
    </message>
    <message>
        <source>Early insights. Patterns may change as more history is saved.</source>
        <translation>Vorläufige Auswertung. Muster können sich ändern, wenn mehr Verlauf gespeichert ist.</translation>
    </message>
    <message>
        <source>Limited data. Overnight readings are often missing; these insights may not reflect your usual glucose.</source>
        <translation>Eingeschränkte Datenlage. Nächtliche Messwerte fehlen oft; diese Auswertung gibt Ihren üblichen Glukoseverlauf vielleicht nicht wieder.</translation>
    </message>
    <message>
        <source>Limited data. Gaps in the selected period may affect these insights.</source>
        <translation>Eingeschränkte Datenlage. Lücken im gewählten Zeitraum können diese Auswertung verfälschen.</translation>
    </message>
    <message>
        <source>Overnight readings are often missing. These insights may not represent your usual glucose.</source>
        <translation>Nächtliche Messwerte fehlen oft. Diese Auswertung gibt Ihren üblichen Glukoseverlauf vielleicht nicht wieder.</translation>
    </message>
    <message>
        <source>Checking saved history</source>
        <translation>Gespeicherter Verlauf wird geprüft</translation>
    </message>
    <message>
        <source>Get started with Insights</source>
        <translation>Erste Schritte mit der Auswertung</translation>
    </message>
    <message>
        <source>History collection is paused</source>
        <translation>Das Speichern des Verlaufs ist angehalten</translation>
    </message>
    <message>
        <source>Waiting for readings</source>
        <translation>Warten auf Messwerte</translation>
    </message>
    <message>
        <source>Building your insights</source>
        <translation>Ihre Auswertung entsteht</translation>
    </message>
    <message>
        <source>More readings needed</source>
        <translation>Mehr Messwerte nötig</translation>
    </message>
    <message>
        <source>Preparing insights</source>
        <translation>Auswertung wird vorbereitet</translation>
    </message>
    <message>
        <source>Your insights are ready</source>
        <translation>Ihre Auswertung ist verfügbar</translation>
    </message>
    <message>
        <source>Checking your saved history.</source>
        <translation>Ihr gespeicherter Verlauf wird geprüft.</translation>
    </message>
    <message>
        <source>Explore your glucose patterns using readings saved on this Mac. Your report will appear once enough history has been collected.</source>
        <translation>Erkunden Sie Ihre Glukosemuster anhand der Messwerte, die auf diesem Computer gespeichert sind. Ihr Bericht erscheint, sobald genug Verlauf gespeichert ist.</translation>
    </message>
    <message>
        <source>Resume saving in Insights settings to keep building your report.</source>
        <translation>Setzen Sie das Speichern in den Einstellungen der Auswertung fort, damit Ihr Bericht weiter entsteht.</translation>
    </message>
    <message>
        <source>Readings are saved after a successful glucose refresh. Insights needs 3 days of collection and at least 70% coverage over the latest 3 days.</source>
        <translation>Messwerte werden nach jeder erfolgreichen Abfrage gespeichert. Die Auswertung benötigt 3 Tage Aufzeichnung und Messwerte für mindestens 70 % der letzten 3 Tage.</translation>
    </message>
    <message>
        <source>1 hour left</source>
        <translation>Noch 1 Stunde</translation>
    </message>
    <message>
        <source>%1 hours left</source>
        <translation>Noch %1 Stunden</translation>
    </message>
    <message>
        <source>1 day left</source>
        <translation>Noch 1 Tag</translation>
    </message>
    <message>
        <source>%1 days left</source>
        <translation>Noch %1 Tage</translation>
    </message>
    <message>
        <source>%1 in the initial 3-day collection period. Insights also needs at least 70% coverage over the latest 3 days. Keep Tidewell running to build your report.</source>
        <translation>%1 bis zum Ende der ersten 3 Tage Aufzeichnung. Die Auswertung benötigt außerdem Messwerte für mindestens 70 % der letzten 3 Tage. Lassen Sie Tidewell laufen, damit Ihr Bericht entsteht.</translation>
    </message>
    <message>
        <source>Insights needs at least 70% coverage over the latest 3 days. Keep Tidewell running to build your report.</source>
        <translation>Die Auswertung benötigt Messwerte für mindestens 70 % der letzten 3 Tage. Lassen Sie Tidewell laufen, damit Ihr Bericht entsteht.</translation>
    </message>
    <message>
        <source>Your history is ready for insights.</source>
        <translation>Ihr Verlauf reicht für die Auswertung aus.</translation>
    </message>
    <message>
        <source>%1 of 3 days</source>
        <translation>%1 von 3 Tagen</translation>
    </message>
    <message>
        <source>Latest 3 days: %1% saved (70% target)</source>
        <translation>Letzte 3 Tage: %1 % gespeichert (Ziel: 70 %)</translation>
    </message>
    <message>
        <source>Progress always uses the latest 3 days, regardless of the report period.</source>
        <translation>Der Fortschritt bezieht sich immer auf die letzten 3 Tage, unabhängig vom Zeitraum des Berichts.</translation>
    </message>
    <message>
        <source>Meeting these targets does not guarantee representative data.</source>
        <translation>Auch wenn diese Ziele erreicht sind, müssen die Daten nicht repräsentativ sein.</translation>
    </message>
    <message>
        <source>History collection progress</source>
        <translation>Fortschritt der Aufzeichnung</translation>
    </message>
    <message>
        <source>To save readings on this computer: tidewell history enable</source>
        <translation>Messwerte auf diesem Computer speichern: tidewell history enable</translation>
    </message>
    <message>
        <source>Saving is off, so new readings aren’t being added.</source>
        <translation>Das Speichern ist ausgeschaltet, deshalb kommen keine neuen Messwerte hinzu.</translation>
    </message>
    <message>
        <source>Saved history is another one than that of this report. Open the report again.</source>
        <translation>Der gespeicherte Verlauf ist ein anderer als der dieses Berichts. Öffnen Sie den Bericht erneut.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; exists. Nothing was written.</source>
        <translation>„%1“ ist schon vorhanden. Es wurde nichts geschrieben.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be written: %2.</source>
        <translation>„%1“ kann nicht geschrieben werden: %2.</translation>
    </message>
    <message>
        <source>Add the applet &quot;System Tray&quot; to the panel.</source>
        <translation>Fügen Sie der Leiste das Applet „System Tray“ hinzu.</translation>
    </message>
    <message>
        <source>Install an indicator for AppIndicators, such as wingpanel-indicator-ayatana.</source>
        <translation>Installieren Sie einen Indikator für AppIndicators, etwa wingpanel-indicator-ayatana.</translation>
    </message>
    <message>
        <source>Install and switch on the GNOME extension &quot;AppIndicator and KStatusNotifierItem Support&quot;.</source>
        <translation>Installieren und aktivieren Sie die GNOME-Erweiterung „AppIndicator and KStatusNotifierItem Support“.</translation>
    </message>
    <message>
        <source>Add the widget &quot;System Tray&quot; to a panel.</source>
        <translation>Fügen Sie einer Leiste das Miniprogramm „Systemabschnitt“ hinzu.</translation>
    </message>
    <message>
        <source>Add the item &quot;Status Tray Plugin&quot; to the panel.</source>
        <translation>Fügen Sie der Leiste das „Statusleisten-Plugin“ hinzu.</translation>
    </message>
    <message>
        <source>Add the widget &quot;Status Notifier&quot; to the panel.</source>
        <translation>Fügen Sie der Leiste das Element „Status Notifier“ hinzu.</translation>
    </message>
    <message>
        <source>Add the applet &quot;Indicator Applet&quot; or &quot;Notification Area&quot; to the panel.</source>
        <translation>Fügen Sie der Leiste das Applet „Indicator Applet“ oder „Benachrichtigungsfeld“ hinzu.</translation>
    </message>
    <message>
        <source>Add the applet &quot;XApp Status Applet&quot; to the panel.</source>
        <translation>Fügen Sie der Leiste das Applet „XApp Status Applet“ hinzu.</translation>
    </message>
    <message>
        <source>Use a bar with a tray, such as waybar, or let your bar run &quot;tidewell watch&quot;.</source>
        <translation>Verwenden Sie eine Leiste mit Statusbereich, etwa waybar, oder lassen Sie Ihre Leiste „tidewell watch“ ausführen.</translation>
    </message>
    <message>
        <source>Switch on the tray of i3bar, or let your bar run &quot;tidewell watch&quot;.</source>
        <translation>Schalten Sie den Statusbereich von i3bar ein, oder lassen Sie Ihre Leiste „tidewell watch“ ausführen.</translation>
    </message>
    <message>
        <source>Use a panel or bar with a tray, or let your bar run &quot;tidewell watch&quot;.</source>
        <translation>Verwenden Sie eine Leiste mit Statusbereich, oder lassen Sie Ihre Leiste „tidewell watch“ ausführen.</translation>
    </message>
    <message>
        <source>No panel shows Tidewell</source>
        <translation>Keine Leiste zeigt Tidewell an</translation>
    </message>
    <message>
        <source>Alerts come all the same. To see the graph, start Tidewell again.</source>
        <translation>Warnungen kommen trotzdem. Um die Kurve zu sehen, starten Sie Tidewell noch einmal.</translation>
    </message>
    <message>
        <source>A phone number needs a plus sign and the country code in front, as in +1.</source>
        <translation>Eine Telefonnummer braucht vorn ein Pluszeichen und die Landesvorwahl, etwa +49.</translation>
    </message>
    <message>
        <source>The password or the user name was mistyped; in a password, capitals and small letters differ.</source>
        <translation>Passwort oder Benutzername wurde falsch eingegeben; beim Passwort kommt es auf Groß- und Kleinbuchstaben an.</translation>
    </message>
    <message>
        <source>The region is another one: it is that of the country where the account was made, not where you are now.</source>
        <translation>Die Region ist eine andere: Es zählt das Land, in dem das Konto angelegt wurde, nicht das Land, in dem Sie jetzt sind.</translation>
    </message>
    <message>
        <source>It is a follower&apos;s account: Tidewell needs the account of the person who wears the sensor, the one in the Dexcom app itself.</source>
        <translation>Es ist das Konto eines Followers: Tidewell braucht das Konto der Person, die den Sensor trägt, also das in der Dexcom-App selbst.</translation>
    </message>
    <message>
        <source>The user name is the e-mail address of the LibreLinkUp account.</source>
        <translation>Der Benutzername ist die E-Mail-Adresse des LibreLinkUp-Kontos.</translation>
    </message>
    <message>
        <source>The e-mail address or the password was mistyped.</source>
        <translation>E-Mail-Adresse oder Passwort wurde falsch eingegeben.</translation>
    </message>
    <message>
        <source>It is the account of the person who wears the sensor: Tidewell needs that of the follower, the one in the LibreLinkUp app, which may have another password.</source>
        <translation>Es ist das Konto der Person, die den Sensor trägt: Tidewell braucht das Konto des Followers aus der LibreLinkUp-App, das ein anderes Passwort haben kann.</translation>
    </message>
    <message>
        <source>New terms are waiting to be accepted: sign out of the LibreLinkUp app and in again, and see whether it asks for something.</source>
        <translation>Neue Bedingungen sind noch nicht angenommen: Melden Sie sich in der LibreLinkUp-App ab und wieder an, und sehen Sie, ob sie nach etwas fragt.</translation>
    </message>
    <message>
        <source>The sign-in was refused</source>
        <translation>Die Anmeldung wurde abgelehnt</translation>
    </message>
    <message>
        <source>Correct what may be wrong and try again; many wrong tries lock the account.</source>
        <translation>Berichtigen Sie, was falsch sein kann, und versuchen Sie es erneut; nach vielen falschen Versuchen wird das Konto gesperrt.</translation>
    </message>
    <message>
        <source>Correct what may be wrong and try again; a few wrong tries lock the account for some minutes.</source>
        <translation>Berichtigen Sie, was falsch sein kann, und versuchen Sie es erneut; schon nach wenigen falschen Versuchen wird das Konto für einige Minuten gesperrt.</translation>
    </message>
    <message>
        <source>The account is locked for a while</source>
        <translation>Das Konto ist eine Weile gesperrt</translation>
    </message>
    <message>
        <source>There were too many sign-ins with a wrong password, from here or from another program.</source>
        <translation>Es gab zu viele Anmeldungen mit falschem Passwort, von hier oder von einem anderen Programm.</translation>
    </message>
    <message>
        <source>Wait a quarter of an hour without trying, then sign in with the right password.</source>
        <translation>Warten Sie eine Viertelstunde ohne Versuch, und melden Sie sich dann mit dem richtigen Passwort an.</translation>
    </message>
    <message>
        <source>The service could not be reached</source>
        <translation>Der Dienst war nicht erreichbar</translation>
    </message>
    <message>
        <source>The date or the time of this computer is wrong.</source>
        <translation>Datum oder Uhrzeit dieses Computers ist falsch.</translation>
    </message>
    <message>
        <source>A network filter, a virus scanner or the sign-in page of a public network stands in between.</source>
        <translation>Ein Netzwerkfilter, ein Virenscanner oder die Anmeldeseite eines öffentlichen Netzes steht dazwischen.</translation>
    </message>
    <message>
        <source>Check the clock, or use another network, and try again.</source>
        <translation>Prüfen Sie die Uhr, oder nehmen Sie ein anderes Netz, und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>The network asks for a sign-in of its own, as in hotels and trains.</source>
        <translation>Das Netz verlangt eine eigene Anmeldung, wie in Hotels und Zügen.</translation>
    </message>
    <message>
        <source>A proxy stands in between and does not let the service through.</source>
        <translation>Ein Proxy steht dazwischen und lässt den Dienst nicht durch.</translation>
    </message>
    <message>
        <source>Open a web page in the browser to see whether the network asks for something.</source>
        <translation>Öffnen Sie eine Webseite im Browser, um zu sehen, ob das Netz nach etwas fragt.</translation>
    </message>
    <message>
        <source>The internet connection is slow or was interrupted.</source>
        <translation>Die Internetverbindung ist langsam oder war unterbrochen.</translation>
    </message>
    <message>
        <source>The service is overloaded at the moment.</source>
        <translation>Der Dienst ist gerade überlastet.</translation>
    </message>
    <message>
        <source>Check the internet connection and try again.</source>
        <translation>Prüfen Sie die Internetverbindung, und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>This computer is not connected to the internet.</source>
        <translation>Dieser Computer ist nicht mit dem Internet verbunden.</translation>
    </message>
    <message>
        <source>A firewall or a proxy does not let Tidewell through.</source>
        <translation>Eine Firewall oder ein Proxy lässt Tidewell nicht durch.</translation>
    </message>
    <message>
        <source>The region does not fit</source>
        <translation>Die Region passt nicht</translation>
    </message>
    <message>
        <source>The account belongs to a region that this version of Tidewell does not know, or the address list of this computer lacks it.</source>
        <translation>Das Konto gehört zu einer Region, die diese Version von Tidewell nicht kennt, oder sie fehlt in der Adressliste dieses Computers.</translation>
    </message>
    <message>
        <source>Choose another region and try again.</source>
        <translation>Wählen Sie eine andere Region, und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>LibreLinkUp needs attention</source>
        <translation>Bei LibreLinkUp müssen Sie etwas tun</translation>
    </message>
    <message>
        <source>LibreLinkUp has new terms of use or a new privacy notice, and nobody accepted them with this account yet.</source>
        <translation>LibreLinkUp hat neue Nutzungsbedingungen oder neue Datenschutzhinweise, die mit diesem Konto noch niemand angenommen hat.</translation>
    </message>
    <message>
        <source>The app shows them only after a new sign-in.</source>
        <translation>Die App zeigt sie erst nach einer neuen Anmeldung.</translation>
    </message>
    <message>
        <source>Sign out of the LibreLinkUp app on the phone and in again, accept what it shows, then try again here.</source>
        <translation>Melden Sie sich in der LibreLinkUp-App auf dem Telefon ab und wieder an, nehmen Sie an, was sie zeigt, und versuchen Sie es dann hier erneut.</translation>
    </message>
    <message>
        <source>The e-mail address of the account was not confirmed yet.</source>
        <translation>Die E-Mail-Adresse des Kontos wurde noch nicht bestätigt.</translation>
    </message>
    <message>
        <source>LibreLinkUp asks for a name, a code or a setting that only its app can take.</source>
        <translation>LibreLinkUp fragt nach einem Namen, einem Code oder einer Einstellung, die nur seine App annehmen kann.</translation>
    </message>
    <message>
        <source>Sign out of the LibreLinkUp app on the phone and in again, do what it asks for, then try again here.</source>
        <translation>Melden Sie sich in der LibreLinkUp-App auf dem Telefon ab und wieder an, tun Sie, was sie verlangt, und versuchen Sie es dann hier erneut.</translation>
    </message>
    <message>
        <source>This person no longer shares</source>
        <translation>Diese Person teilt ihre Messwerte nicht mehr</translation>
    </message>
    <message>
        <source>The person who wears the sensor ended sharing, or removed you as a follower.</source>
        <translation>Die Person, die den Sensor trägt, hat das Teilen beendet oder Sie als Follower entfernt.</translation>
    </message>
    <message>
        <source>The person moved to another account, which needs a new invitation.</source>
        <translation>Die Person ist zu einem anderen Konto gewechselt; dafür ist eine neue Einladung nötig.</translation>
    </message>
    <message>
        <source>Go back, sign in again and choose who is listed then.</source>
        <translation>Gehen Sie zurück, melden Sie sich erneut an, und wählen Sie, wer dann aufgeführt ist.</translation>
    </message>
    <message>
        <source>Nobody is chosen yet</source>
        <translation>Noch niemand gewählt</translation>
    </message>
    <message>
        <source>The account can follow one person or more, and none of them was chosen.</source>
        <translation>Das Konto kann einer oder mehreren Personen folgen, und keine davon wurde gewählt.</translation>
    </message>
    <message>
        <source>Go back and choose whose readings to show.</source>
        <translation>Gehen Sie zurück, und wählen Sie, wessen Messwerte angezeigt werden sollen.</translation>
    </message>
    <message>
        <source>The account needs attention</source>
        <translation>Beim Konto müssen Sie etwas tun</translation>
    </message>
    <message>
        <source>The Dexcom app waits for something that only it can take.</source>
        <translation>Die Dexcom-App wartet auf etwas, das nur sie annehmen kann.</translation>
    </message>
    <message>
        <source>Open the Dexcom app, do what it asks for, then try again here.</source>
        <translation>Öffnen Sie die Dexcom-App, tun Sie, was sie verlangt, und versuchen Sie es dann hier erneut.</translation>
    </message>
    <message>
        <source>The service asks to wait</source>
        <translation>Der Dienst bittet zu warten</translation>
    </message>
    <message>
        <source>The account is locked for a while, after several wrong passwords.</source>
        <translation>Das Konto ist nach mehreren falschen Passwörtern eine Weile gesperrt.</translation>
    </message>
    <message>
        <source>Another program asks with the same account, or from the same network, too often.</source>
        <translation>Ein anderes Programm fragt mit demselben Konto oder aus demselben Netz zu oft.</translation>
    </message>
    <message>
        <source>LibreLinkUp wants a newer version</source>
        <translation>LibreLinkUp verlangt eine neuere Version</translation>
    </message>
    <message>
        <source>LibreLinkUp has changed, and this version of Tidewell is too old for it.</source>
        <translation>LibreLinkUp hat sich geändert, und diese Version von Tidewell ist dafür zu alt.</translation>
    </message>
    <message>
        <source>Install the newest Tidewell; if you have it, try again in a few days.</source>
        <translation>Installieren Sie das neueste Tidewell; wenn Sie es schon haben, versuchen Sie es in einigen Tagen erneut.</translation>
    </message>
    <message>
        <source>The service is in trouble</source>
        <translation>Der Dienst ist gestört</translation>
    </message>
    <message>
        <source>The service is overloaded or under maintenance.</source>
        <translation>Der Dienst ist überlastet oder wird gewartet.</translation>
    </message>
    <message>
        <source>Wait a few minutes and try again; name and password stay as they are.</source>
        <translation>Warten Sie einige Minuten, und versuchen Sie es erneut; Name und Passwort bleiben, wie sie sind.</translation>
    </message>
    <message>
        <source>The service does not let this network in for a while, after many requests.</source>
        <translation>Der Dienst lässt dieses Netz nach vielen Anfragen eine Weile nicht zu.</translation>
    </message>
    <message>
        <source>The service&apos;s answer was not understood</source>
        <translation>Die Antwort des Dienstes war nicht zu verstehen</translation>
    </message>
    <message>
        <source>The service is under maintenance or has changed.</source>
        <translation>Der Dienst wird gewartet oder hat sich geändert.</translation>
    </message>
    <message>
        <source>The sign-in page of a public network answered in place of the service.</source>
        <translation>Statt des Dienstes hat die Anmeldeseite eines öffentlichen Netzes geantwortet.</translation>
    </message>
    <message>
        <source>Try again in a few minutes, or from another network.</source>
        <translation>Versuchen Sie es in einigen Minuten erneut, oder aus einem anderen Netz.</translation>
    </message>
    <message>
        <source>The user name has a form that the service does not know.</source>
        <translation>Der Benutzername hat eine Form, die der Dienst nicht kennt.</translation>
    </message>
    <message>
        <source>The session ended at once</source>
        <translation>Die Sitzung endete sofort</translation>
    </message>
    <message>
        <source>The password was changed a moment ago.</source>
        <translation>Das Passwort wurde gerade eben geändert.</translation>
    </message>
    <message>
        <source>Try again; if it happens again, check the password in the service&apos;s app.</source>
        <translation>Versuchen Sie es erneut; wenn es wieder geschieht, prüfen Sie das Passwort in der App des Dienstes.</translation>
    </message>
    <message>
        <source>Another program signed in with the same account in the same moment.</source>
        <translation>Ein anderes Programm hat sich im selben Moment mit demselben Konto angemeldet.</translation>
    </message>
    <message>
        <source>Nobody shares with this account</source>
        <translation>Niemand teilt Messwerte mit diesem Konto</translation>
    </message>
    <message>
        <source>The person who wears the sensor has not invited this e-mail address yet.</source>
        <translation>Die Person, die den Sensor trägt, hat diese E-Mail-Adresse noch nicht eingeladen.</translation>
    </message>
    <message>
        <source>The invitation was not accepted yet in the LibreLinkUp app.</source>
        <translation>Die Einladung wurde in der LibreLinkUp-App noch nicht angenommen.</translation>
    </message>
    <message>
        <source>It is the account of the person who wears the sensor, which follows nobody: Tidewell needs a follower&apos;s.</source>
        <translation>Es ist das Konto der Person, die den Sensor trägt, und folgt niemandem: Tidewell braucht das Konto eines Followers.</translation>
    </message>
    <message>
        <source>Have the person invite this address in the Libre app, accept the invitation in the LibreLinkUp app, then try again.</source>
        <translation>Bitten Sie die Person, diese Adresse in der Libre-App einzuladen, nehmen Sie die Einladung in der LibreLinkUp-App an, und versuchen Sie es dann erneut.</translation>
    </message>
    <message>
        <source>Signed in, but there are no readings</source>
        <translation>Angemeldet, aber es gibt keine Messwerte</translation>
    </message>
    <message>
        <source>Sharing is switched off in the Dexcom app.</source>
        <translation>Das Teilen ist in der Dexcom-App ausgeschaltet.</translation>
    </message>
    <message>
        <source>No follower was invited: Dexcom shares nothing until there is at least one.</source>
        <translation>Es wurde kein Follower eingeladen: Dexcom teilt nichts, bis es mindestens einen gibt.</translation>
    </message>
    <message>
        <source>There is no active sensor, or it is warming up.</source>
        <translation>Es gibt keinen aktiven Sensor, oder er ist in der Aufwärmphase.</translation>
    </message>
    <message>
        <source>The phone with the sensor had no internet connection for the last 24 hours.</source>
        <translation>Das Telefon mit dem Sensor hatte in den letzten 24 Stunden keine Internetverbindung.</translation>
    </message>
    <message>
        <source>Switch Share on in the Dexcom app and invite a follower; then try again, or go on without a value.</source>
        <translation>Schalten Sie das Teilen („Share“) in der Dexcom-App ein, und laden Sie einen Follower ein; versuchen Sie es dann erneut, oder machen Sie ohne Wert weiter.</translation>
    </message>
    <message>
        <source>The phone with the sensor had no internet connection for the last twelve hours.</source>
        <translation>Das Telefon mit dem Sensor hatte in den letzten zwölf Stunden keine Internetverbindung.</translation>
    </message>
    <message>
        <source>See whether the LibreLinkUp app shows a value; then try again, or go on without one.</source>
        <translation>Sehen Sie nach, ob die LibreLinkUp-App einen Wert zeigt; versuchen Sie es dann erneut, oder machen Sie ohne weiter.</translation>
    </message>
    <message>
        <source>The password is needed</source>
        <translation>Das Passwort wird gebraucht</translation>
    </message>
    <message>
        <source>The password of this account is not stored.</source>
        <translation>Das Passwort dieses Kontos ist nicht gespeichert.</translation>
    </message>
    <message>
        <source>The keyring is locked, or the password was removed from it.</source>
        <translation>Der Schlüsselbund ist gesperrt, oder das Passwort wurde daraus entfernt.</translation>
    </message>
    <message>
        <source>Enter the password.</source>
        <translation>Geben Sie das Passwort ein.</translation>
    </message>
    <message>
        <source>The account could not be saved</source>
        <translation>Das Konto konnte nicht gespeichert werden</translation>
    </message>
    <message>
        <source>The keyring is locked, or its unlock dialog was closed.</source>
        <translation>Der Schlüsselbund ist gesperrt, oder sein Dialog zum Entsperren wurde geschlossen.</translation>
    </message>
    <message>
        <source>Unlock the keyring and try again; what you entered is kept until then.</source>
        <translation>Entsperren Sie den Schlüsselbund, und versuchen Sie es erneut; was Sie eingegeben haben, bleibt bis dahin erhalten.</translation>
    </message>
    <message>
        <source>The disk is full.</source>
        <translation>Die Festplatte ist voll.</translation>
    </message>
    <message>
        <source>The folder of the settings cannot be written to.</source>
        <translation>In den Ordner der Einstellungen kann nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>Make room or mend the folder&apos;s permissions, then try again.</source>
        <translation>Schaffen Sie Platz, oder berichtigen Sie die Rechte des Ordners, und versuchen Sie es dann erneut.</translation>
    </message>
    <message>
        <source>Wait for %1, then try again.</source>
        <translation>Warten Sie %1, und versuchen Sie es dann erneut.</translation>
    </message>
    <message>
        <source>What Tidewell is</source>
        <translation>Was Tidewell ist</translation>
    </message>
    <message>
        <source>No decisions about treatment</source>
        <translation>Keine Entscheidungen über die Behandlung</translation>
    </message>
    <message>
        <source>Keep your other alarms on</source>
        <translation>Lassen Sie Ihre anderen Alarme eingeschaltet</translation>
    </message>
    <message>
        <source>Alerts can fail</source>
        <translation>Warnungen können ausbleiben</translation>
    </message>
    <message>
        <source>Readings come from other companies</source>
        <translation>Messwerte kommen von anderen Unternehmen</translation>
    </message>
    <message>
        <source>What is stored, and where</source>
        <translation>Was gespeichert wird, und wo</translation>
    </message>
    <message>
        <source>No warranty</source>
        <translation>Keine Gewährleistung</translation>
    </message>
    <message>
        <source>Free software</source>
        <translation>Freie Software</translation>
    </message>
    <message>
        <source>Tidewell shows the glucose readings that a sharing service already has for you or for somebody you follow. It is a convenience on your desktop. It is not a medical device, and no authority has examined or approved it.</source>
        <translation>Tidewell zeigt die Glukosewerte, die ein Dienst zum Teilen von Messwerten bereits für Sie oder für jemanden hat, dem Sie folgen. Es ist eine bequeme Anzeige auf Ihrem Desktop. Es ist kein Medizinprodukt, und keine Behörde hat es geprüft oder zugelassen.</translation>
    </message>
    <message>
        <source>Do not decide about insulin, food or any other treatment by what Tidewell shows. Use the receiver, the sensor&apos;s own app or a blood glucose meter for that, and do what your care team has told you. When how somebody feels does not match a reading, measure.</source>
        <translation>Entscheiden Sie nicht nach dem, was Tidewell anzeigt, über Insulin, Essen oder eine andere Behandlung. Verwenden Sie dafür den Empfänger, die App des Sensors oder ein Blutzuckermessgerät, und tun Sie, was Ihr Diabetesteam Ihnen gesagt hat. Wenn das Befinden nicht zu einem Messwert passt, messen Sie den Blutzucker nach.</translation>
    </message>
    <message>
        <source>Leave the alarms of the phone, the receiver or the pump switched on, and near enough to be heard. Tidewell stands beside them. It does not take their place.</source>
        <translation>Lassen Sie die Alarme des Telefons, des Empfängers oder der Pumpe eingeschaltet und nahe genug, um sie zu hören. Tidewell ergänzt sie. Es ersetzt sie nicht.</translation>
    </message>
    <message>
        <source>An alert needs a computer that is awake, a network, a service that answers, and a desktop that shows notifications and plays sounds. When one of them is missing, no alert comes, and nobody may notice that.

Alerts that you switch off, quiet hours and snoozes are silent because you want them to be.</source>
        <translation>Eine Warnung braucht einen Computer, der läuft und nicht in Bereitschaft ist, ein Netz, einen Dienst, der antwortet, und einen Desktop, der Benachrichtigungen anzeigt und Töne abspielt. Fehlt eines davon, kommt keine Warnung, und vielleicht bemerkt es niemand.

Warnungen, die Sie ausschalten, bleiben stumm, ebenso Warnungen in der Ruhezeit und während einer Stummschaltung, weil Sie es so wollen.</translation>
    </message>
    <message>
        <source>Tidewell gets readings from the services of other companies, with your account there. Those companies neither make nor endorse Tidewell. Their terms apply to your account, and whether they allow a program like this one is between you and them.

Readings may be late, wrong or missing, and a service may stop at any time.</source>
        <translation>Tidewell erhält Messwerte von den Diensten anderer Unternehmen, mit Ihrem Konto dort. Diese Unternehmen stellen Tidewell weder her noch empfehlen sie es. Für Ihr Konto gelten deren Bedingungen, und ob sie ein Programm wie dieses zulassen, ist eine Sache zwischen Ihnen und ihnen.

Messwerte können verspätet oder falsch sein oder fehlen, und ein Dienst kann jederzeit enden.</translation>
    </message>
    <message>
        <source>Tidewell is given to you as it is, without a warranty of any kind. As far as the law allows, those who make it are not liable for harm that comes from using it, or from not being able to use it.</source>
        <translation>Tidewell wird Ihnen so überlassen, wie es ist, ohne jede Gewährleistung. Soweit das Gesetz es zulässt, haften seine Hersteller nicht für Schäden, die aus der Benutzung entstehen oder daraus, dass es nicht benutzt werden kann.</translation>
    </message>
    <message>
        <source>You may use, study, share and change Tidewell under the Apache License, version 2.0. Its text is in the file LICENSE that comes with the program. These terms take away none of the rights that it gives you.</source>
        <translation>Sie dürfen Tidewell unter der Apache License, Version 2.0, benutzen, untersuchen, weitergeben und ändern. Ihr Text steht in der Datei LICENSE, die mit dem Programm kommt. Diese Bedingungen nehmen keines der Rechte weg, die sie Ihnen gibt.</translation>
    </message>
    <message>
        <source>The low threshold must stay below the high one. Change the other one first.</source>
        <translation>Der untere Grenzwert muss unter dem oberen bleiben. Ändern Sie zuerst den anderen.</translation>
    </message>
    <message>
        <source>The settings do not offer this value.</source>
        <translation>Die Einstellungen bieten diesen Wert nicht an.</translation>
    </message>
    <message>
        <source>The change could not be stored.</source>
        <translation>Die Änderung konnte nicht gespeichert werden.</translation>
    </message>
    <message>
        <source>You are still signed in, since the saved history could not be deleted.</source>
        <translation>Sie sind noch angemeldet, weil der gespeicherte Verlauf nicht gelöscht werden konnte.</translation>
    </message>
    <message>
        <source>Another account was signed in meanwhile. It stays.</source>
        <translation>Inzwischen wurde ein anderes Konto angemeldet. Es bleibt.</translation>
    </message>
    <message>
        <source>You are signed out.</source>
        <translation>Sie sind abgemeldet.</translation>
    </message>
    <message>
        <source>Saving is on. Readings are kept for 30 days.</source>
        <translation>Das Speichern ist eingeschaltet. Messwerte werden 30 Tage aufbewahrt.</translation>
    </message>
    <message>
        <source>Saving is on. Readings are kept for 90 days.</source>
        <translation>Das Speichern ist eingeschaltet. Messwerte werden 90 Tage aufbewahrt.</translation>
    </message>
    <message>
        <source>Saving is off. What is saved stays.</source>
        <translation>Das Speichern ist ausgeschaltet. Was gespeichert ist, bleibt.</translation>
    </message>
    <message>
        <source>Readings are kept for 30 days.</source>
        <translation>Messwerte werden 30 Tage aufbewahrt.</translation>
    </message>
    <message>
        <source>Readings are kept for 90 days.</source>
        <translation>Messwerte werden 90 Tage aufbewahrt.</translation>
    </message>
    <message>
        <source>All saved history was deleted. Saving is off.</source>
        <translation>Der gesamte gespeicherte Verlauf wurde gelöscht. Das Speichern ist ausgeschaltet.</translation>
    </message>
    <message>
        <source>The saved history was deleted. Saving is off.</source>
        <translation>Der gespeicherte Verlauf wurde gelöscht. Das Speichern ist ausgeschaltet.</translation>
    </message>
    <message>
        <source>The service refused this more than once, and it is not sent again, so that the account is not locked: change something first, or wait for a quarter of an hour.</source>
        <translation>Der Dienst hat dies mehr als einmal abgelehnt, und es wird nicht noch einmal gesendet, damit das Konto nicht gesperrt wird: Ändern Sie zuerst etwas, oder warten Sie eine Viertelstunde.</translation>
    </message>
    <message>
        <source>The settings could not be saved</source>
        <translation>Die Einstellungen konnten nicht gespeichert werden</translation>
    </message>
    <message>
        <source>Sending test alert</source>
        <translation>Testwarnung wird gesendet</translation>
    </message>
    <message>
        <source>Saving could not be switched on</source>
        <translation>Das Speichern konnte nicht eingeschaltet werden</translation>
    </message>
    <message>
        <source>Saving could not be switched off</source>
        <translation>Das Speichern konnte nicht ausgeschaltet werden</translation>
    </message>
    <message>
        <source>The keyring is locked, or none is running.</source>
        <translation>Der Schlüsselbund ist gesperrt, oder es läuft keiner.</translation>
    </message>
    <message>
        <source>The disk is full, or the folder of saved readings cannot be written to.</source>
        <translation>Die Festplatte ist voll, oder in den Ordner der gespeicherten Messwerte kann nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>Try again, or go on without saving: it can be switched on later.</source>
        <translation>Versuchen Sie es erneut, oder machen Sie ohne Speichern weiter: Es lässt sich später einschalten.</translation>
    </message>
    <message>
        <source>Try again.</source>
        <translation>Versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>The autostart entry is meant for other desktops.</source>
        <translation>Der Autostart-Eintrag ist für andere Desktops bestimmt.</translation>
    </message>
    <message>
        <source>The autostart entry names no program.</source>
        <translation>Der Autostart-Eintrag nennt kein Programm.</translation>
    </message>
    <message>
        <source>The autostart entry starts %1, which is not this program.</source>
        <translation>Der Autostart-Eintrag startet %1, und das ist nicht dieses Programm.</translation>
    </message>
    <message>
        <source>The autostart entry names %1, which is not there.</source>
        <translation>Der Autostart-Eintrag nennt %1, und das ist nicht vorhanden.</translation>
    </message>
    <message>
        <source>This desktop starts nothing by itself: let its own configuration start %1.</source>
        <translation>Dieser Desktop startet nichts von selbst: Lassen Sie seine eigene Konfiguration %1 starten.</translation>
    </message>
    <message>
        <source>%1 is not a desktop entry.</source>
        <translation>%1 ist kein Desktop-Eintrag.</translation>
    </message>
    <message>
        <source>There is no folder for the programs that start at login.</source>
        <translation>Es gibt keinen Ordner für die Programme, die bei der Anmeldung starten.</translation>
    </message>
    <message>
        <source>%1 could not be written: %2.</source>
        <translation>%1 konnte nicht geschrieben werden: %2.</translation>
    </message>
    <message>
        <source>The desktop has a status area for the item.</source>
        <translation>Der Desktop hat einen Statusbereich für das Symbol.</translation>
    </message>
    <message>
        <source>The desktop has no status area that shows the item; alerts come all the same.</source>
        <translation>Der Desktop hat keinen Statusbereich, der das Symbol anzeigt; Warnungen kommen trotzdem.</translation>
    </message>
    <message>
        <source>Readings are saved on this computer, encrypted.</source>
        <translation>Messwerte werden auf diesem Computer verschlüsselt gespeichert.</translation>
    </message>
    <message>
        <source>Saving readings on this computer is off.</source>
        <translation>Das Speichern von Messwerten auf diesem Computer ist ausgeschaltet.</translation>
    </message>
    <message>
        <source>It is too large</source>
        <translation>Sie ist zu groß</translation>
    </message>
    <message>
        <source>&quot;%1&quot; was written.</source>
        <translation>„%1“ wurde geschrieben.</translation>
    </message>
    <message>
        <source>Dexcom Share busy</source>
        <translation>Dexcom Share ist ausgelastet</translation>
    </message>
    <message>
        <source>LibreLinkUp busy</source>
        <translation>LibreLinkUp ist ausgelastet</translation>
    </message>
    <message>
        <source>Restart it, or log out of the desktop and in again; then send a test alert.</source>
        <translation>Starten Sie den Benachrichtigungsdienst neu, oder melden Sie sich vom Desktop ab und wieder an; senden Sie dann eine Testwarnung.</translation>
    </message>
    <message>
        <source>Send a test alert and listen.</source>
        <translation>Senden Sie eine Testwarnung, und hören Sie hin.</translation>
    </message>
    <message>
        <source>Connect speakers or headphones.</source>
        <translation>Schließen Sie Lautsprecher oder Kopfhörer an.</translation>
    </message>
    <message>
        <source>Switch the sound of the computer on.</source>
        <translation>Schalten Sie den Ton des Computers ein.</translation>
    </message>
    <message>
        <source>Turn up the sound of the computer.</source>
        <translation>Stellen Sie den Ton des Computers lauter.</translation>
    </message>
    <message>
        <source>Send a test alert. If it is silent too, log out of the desktop and in again, and see that libcanberra is installed.</source>
        <translation>Senden Sie eine Testwarnung. Bleibt auch sie stumm, melden Sie sich vom Desktop ab und wieder an, und sehen Sie nach, ob libcanberra installiert ist.</translation>
    </message>
    <message>
        <source>Sign in again from the menu.</source>
        <translation>Melden Sie sich über das Menü erneut an.</translation>
    </message>
    <message>
        <source>Wait a while, then sign in again from the menu.</source>
        <translation>Warten Sie eine Weile, und melden Sie sich dann über das Menü erneut an.</translation>
    </message>
    <message>
        <source>Your account needs attention.</source>
        <translation>Beim Konto müssen Sie etwas tun.</translation>
    </message>
    <message>
        <source>Your account needs attention: %1</source>
        <translation>Beim Konto müssen Sie etwas tun: %1</translation>
    </message>
    <message>
        <source>Resolve it in the service&apos;s own app, then choose “Reconnect” in the settings, tab Account.</source>
        <translation>Beheben Sie es in der App des Dienstes, und wählen Sie dann „Neu verbinden“ in den Einstellungen, Reiter „Konto“.</translation>
    </message>
    <message>
        <source>Sign in from the menu.</source>
        <translation>Melden Sie sich über das Menü an.</translation>
    </message>
    <message>
        <source>Switch on “Low glucose” in the settings, tab Alerts.</source>
        <translation>Schalten Sie „Niedrige Glukose“ in den Einstellungen ein, Reiter „Warnungen“.</translation>
    </message>
    <message>
        <source>Switch on “Rapid fall” in the settings, tab Alerts.</source>
        <translation>Schalten Sie „Schneller Abfall“ in den Einstellungen ein, Reiter „Warnungen“.</translation>
    </message>
    <message>
        <source>Switch on “High glucose” in the settings, tab Alerts.</source>
        <translation>Schalten Sie „Hohe Glukose“ in den Einstellungen ein, Reiter „Warnungen“.</translation>
    </message>
    <message>
        <source>Switch on “Rapid rise” in the settings, tab Alerts.</source>
        <translation>Schalten Sie „Schneller Anstieg“ in den Einstellungen ein, Reiter „Warnungen“.</translation>
    </message>
    <message>
        <source>Switch on “No data for 15 minutes” in the settings, tab Alerts.</source>
        <translation>Schalten Sie „Keine Daten seit 15 Minuten“ in den Einstellungen ein, Reiter „Warnungen“.</translation>
    </message>
    <message>
        <source>Choose others in the settings, tab Glucose.</source>
        <translation>Wählen Sie andere in den Einstellungen, Reiter „Glukose“.</translation>
    </message>
    <message>
        <source>Switch on “Let low alerts through” in the settings, tab Alerts.</source>
        <translation>Schalten Sie „Bei niedrigen Werten trotzdem warnen“ in den Einstellungen ein, Reiter „Warnungen“.</translation>
    </message>
    <message>
        <source>Choose two different times in the settings, tab Alerts.</source>
        <translation>Wählen Sie in den Einstellungen zwei verschiedene Zeiten, Reiter „Warnungen“.</translation>
    </message>
    <message>
        <source>The times of the quiet hours are not valid.</source>
        <translation>Die Zeiten der Ruhezeit sind ungültig.</translation>
    </message>
    <message>
        <source>Choose them anew in the settings, tab Alerts.</source>
        <translation>Wählen Sie sie in den Einstellungen neu, Reiter „Warnungen“.</translation>
    </message>
    <message>
        <source>Choose “Resume alerts now” in the menu.</source>
        <translation>Wählen Sie „Warnungen jetzt wieder einschalten“ im Menü.</translation>
    </message>
    <message>
        <source>Start Tidewell.</source>
        <translation>Starten Sie Tidewell.</translation>
    </message>
    <message>
        <source>Switch on “Show alerts” in the settings, tab Alerts.</source>
        <translation>Schalten Sie „Warnungen anzeigen“ in den Einstellungen ein, Reiter „Warnungen“.</translation>
    </message>
    <message>
        <source>See what is saved in the settings, tab Insights.</source>
        <translation>Sehen Sie in den Einstellungen nach, was gespeichert ist, Reiter „Auswertung“.</translation>
    </message>
    <message>
        <source>Mend that, or switch “Start Tidewell when I log in” off in the settings, tab General.</source>
        <translation>Beheben Sie das, oder schalten Sie „Tidewell beim Anmelden am Computer starten“ in den Einstellungen aus, Reiter „Allgemein“.</translation>
    </message>
    <message>
        <source>No keyring is running in this session: window managers without a desktop often start none.</source>
        <translation>In dieser Sitzung läuft kein Schlüsselbund: Fenstermanager ohne Desktop starten oft keinen.</translation>
    </message>
    <message>
        <source>The keyring runs, but does not answer.</source>
        <translation>Der Schlüsselbund läuft, antwortet aber nicht.</translation>
    </message>
    <message>
        <source>Install and start GNOME Keyring or KWallet, then try again; or start Tidewell with TIDEWELL_KEYCHAIN=file in its environment: it then keeps the password in a file that only you can read.</source>
        <translation>Installieren und starten Sie GNOME Keyring oder KWallet und versuchen Sie es dann noch einmal; oder starten Sie Tidewell mit TIDEWELL_KEYCHAIN=file in seiner Umgebung: Dann bewahrt es das Passwort in einer Datei auf, die nur Sie lesen können.</translation>
    </message>
    <message>
        <source>The file with the passwords belongs to somebody else, or others may read it.</source>
        <translation>Die Datei mit den Passwörtern gehört jemand anderem, oder andere dürfen sie lesen.</translation>
    </message>
    <message>
        <source>Make the file and its folder yours alone, then try again.</source>
        <translation>Sorgen Sie dafür, dass Datei und Ordner nur Ihnen gehören, und versuchen Sie es dann noch einmal.</translation>
    </message>
    <message>
        <source>The file with the passwords or its folder cannot be written to.</source>
        <translation>In die Datei mit den Passwörtern oder in ihren Ordner kann nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>What the keyring holds for this account is damaged, or the keyring is in trouble.</source>
        <translation>Was der Schlüsselbund für dieses Konto enthält, ist beschädigt, oder der Schlüsselbund ist gestört.</translation>
    </message>
    <message>
        <source>Remove the entry of Tidewell with the keyring&apos;s own program, or start the keyring anew, then try again.</source>
        <translation>Entfernen Sie den Eintrag von Tidewell mit dem Programm des Schlüsselbunds, oder starten Sie den Schlüsselbund neu, und versuchen Sie es dann noch einmal.</translation>
    </message>
    <message>
        <source>Too many refused sign-ins</source>
        <translation>Zu viele abgelehnte Anmeldungen</translation>
    </message>
    <message>
        <source>The service refused this account several times within a quarter of an hour. More tries could lock it.</source>
        <translation>Der Dienst hat dieses Konto innerhalb einer Viertelstunde mehrmals abgelehnt. Weitere Versuche könnten es sperren.</translation>
    </message>
    <message>
        <source>Your password is in the keyring of this computer, or in a file that only you can read when you chose that. Account name and settings are in your configuration folder. Readings are saved only when you say so: encrypted, on this computer, until you delete them or the time that you chose has passed.

Tidewell talks to the sharing service that you choose, and to nobody else. Nothing is sent to the people who make Tidewell.</source>
        <translation>Ihr Passwort liegt im Schlüsselbund dieses Computers, oder in einer Datei, die nur Sie lesen können, wenn Sie das so gewählt haben. Kontoname und Einstellungen liegen in Ihrem Konfigurationsordner. Messwerte werden nur gespeichert, wenn Sie es wünschen: verschlüsselt, auf diesem Computer, bis Sie sie löschen oder die von Ihnen gewählte Zeit vergangen ist.

Tidewell spricht mit dem Dienst, den Sie wählen, und mit niemandem sonst. An die Hersteller von Tidewell wird nichts gesendet.</translation>
    </message>
    <message>
        <source>You are still signed in.</source>
        <translation>Sie sind noch angemeldet.</translation>
    </message>
    <message>
        <source>You are signed out. The saved readings are deleted.</source>
        <translation>Sie sind abgemeldet. Die gespeicherten Messwerte sind gelöscht.</translation>
    </message>
    <message>
        <source>The service has answered.</source>
        <translation>Der Dienst hat geantwortet.</translation>
    </message>
    <message>
        <source>It did not work. What is wrong stands above.</source>
        <translation>Es hat nicht geklappt. Oben steht, woran es liegt.</translation>
    </message>
    <message>
        <source>No answer has come.</source>
        <translation>Es ist keine Antwort gekommen.</translation>
    </message>
    <message>
        <source>The list of programs that start at login gives no answer.</source>
        <translation>Die Liste der Programme, die bei der Anmeldung starten, gibt keine Antwort.</translation>
    </message>
    <message>
        <source>The autostart entry runs the command %1 of this program, which shows nothing in the panel.</source>
        <translation>Der Autostart-Eintrag führt den Befehl %1 dieses Programms aus, der nichts in der Leiste zeigt.</translation>
    </message>
    <message>
        <source>%1 could not be read: %2.</source>
        <translation>%1 konnte nicht gelesen werden: %2.</translation>
    </message>
    <message>
        <source>%1 could not be removed: %2.</source>
        <translation>%1 konnte nicht entfernt werden: %2.</translation>
    </message>
    <message>
        <source>Remove or mend the file.</source>
        <translation>Entfernen oder berichtigen Sie die Datei.</translation>
    </message>
</context>
<context>
    <name>DonePage</name>
    <message>
        <source>Look for the value in your panel. It looks like this:</source>
        <translation>Suchen Sie den Wert in Ihrer Leiste. So sieht er aus:</translation>
    </message>
    <message>
        <source>A click on it opens the menu, with the graph of the last hours.</source>
        <translation>Ein Klick darauf öffnet das Menü mit der Kurve der letzten Stunden.</translation>
    </message>
    <message>
        <source>The menu also leads to Insights and to the settings, where you can change all of this.</source>
        <translation>Das Menü führt auch zur Auswertung und zu den Einstellungen, in denen Sie all das ändern können.</translation>
    </message>
    <message>
        <source>A question mark behind the value means that it is old: look at the phone.</source>
        <translation>Ein Fragezeichen hinter dem Wert bedeutet, dass er alt ist: Sehen Sie dann auf das Telefon.</translation>
    </message>
    <message>
        <source>Some lows will be silent</source>
        <translation>Manche niedrigen Werte bleiben stumm</translation>
    </message>
    <message>
        <source>When you choose Finish, Tidewell begins to fetch readings.</source>
        <translation>Mit „Fertig“ beginnt Tidewell, Messwerte abzurufen.</translation>
    </message>
    <message>
        <source>Tidewell is ready</source>
        <translation>Tidewell ist bereit</translation>
    </message>
    <message>
        <source>In the panel: %1</source>
        <translation>In der Leiste: %1</translation>
    </message>
</context>
<context>
    <name>FirstReadingPage</name>
    <message>
        <source>The first value</source>
        <translation>Der erste Wert</translation>
    </message>
    <message>
        <source>&amp;Try again</source>
        <translation>Erneut &amp;versuchen</translation>
    </message>
    <message>
        <source>&amp;Ask again</source>
        <translation>Erneut a&amp;bfragen</translation>
    </message>
    <message>
        <source>Asking for the newest value…</source>
        <translation>Der neueste Wert wird abgefragt…</translation>
    </message>
    <message>
        <source>Measured just now.</source>
        <translation>Gerade eben gemessen.</translation>
    </message>
    <message>
        <source>Measured %1 ago.</source>
        <translation>Alter des Werts: %1.</translation>
    </message>
    <message>
        <source>Compare it with the phone or the receiver: it should be the same.</source>
        <translation>Vergleichen Sie ihn mit dem Telefon oder dem Empfänger: Er sollte gleich sein.</translation>
    </message>
    <message>
        <source>This value is old: the present one may be quite different. Look whether the phone has a connection and is near the sensor.</source>
        <translation>Dieser Wert ist alt: Der jetzige kann ganz anders sein. Sehen Sie nach, ob das Telefon eine Verbindung hat und in der Nähe des Sensors ist.</translation>
    </message>
    <message>
        <source>Nothing newer has come, so there is no value to show. Look whether the phone has a connection and is near the sensor. You can go on; new values appear by themselves.</source>
        <translation>Es ist nichts Neueres gekommen, deshalb gibt es keinen Wert anzuzeigen. Sehen Sie nach, ob das Telefon eine Verbindung hat und in der Nähe des Sensors ist. Sie können weitermachen; neue Werte erscheinen von selbst.</translation>
    </message>
    <message>
        <source>Account: %1</source>
        <translation>Konto: %1</translation>
    </message>
</context>
<context>
    <name>GlucoseGraphView</name>
    <message>
        <source>Displays your glucose readings over time with high and low threshold lines</source>
        <translation>Zeigt Ihre Glukosewerte im Zeitverlauf mit Linien für den oberen und den unteren Grenzwert</translation>
    </message>
</context>
<context>
    <name>GlucosePage</name>
    <message>
        <source>Unit:</source>
        <translation>Einheit:</translation>
    </message>
    <message>
        <source>&amp;mg/dL</source>
        <translation>m&amp;g/dL</translation>
    </message>
    <message>
        <source>mmo&amp;l/L</source>
        <translation>mmo&amp;l/L</translation>
    </message>
    <message>
        <source>Low threshold</source>
        <translation>Unterer Grenzwert</translation>
    </message>
    <message>
        <source>High threshold</source>
        <translation>Oberer Grenzwert</translation>
    </message>
    <message>
        <source>At these limits and beyond, the value gets a colour and an alert comes. Ask your care team when you are not sure; everything can be changed later.</source>
        <translation>Ab diesen Grenzwerten wird der Wert farbig, und es kommt eine Warnung. Fragen Sie Ihr Diabetesteam, wenn Sie unsicher sind; alles lässt sich später ändern.</translation>
    </message>
    <message>
        <source>Lo&amp;w threshold:</source>
        <translation>&amp;Unterer Grenzwert:</translation>
    </message>
    <message>
        <source>&amp;High threshold:</source>
        <translation>&amp;Oberer Grenzwert:</translation>
    </message>
    <message>
        <source>Unit and limits</source>
        <translation>Einheit und Grenzwerte</translation>
    </message>
    <message>
        <source>Red: %1 or below, or falling quickly</source>
        <translation>Rot: %1 oder weniger, oder schnell fallend</translation>
    </message>
    <message>
        <source>No colour: in between</source>
        <translation>Ohne Farbe: dazwischen</translation>
    </message>
    <message>
        <source>Yellow: %1 or above, or rising quickly</source>
        <translation>Gelb: %1 oder mehr, oder schnell steigend</translation>
    </message>
    <message>
        <source>Unit</source>
        <translation>Einheit</translation>
    </message>
</context>
<context>
    <name>HistoryPage</name>
    <message>
        <source>Saved readings give you Insights: time in range, averages and a daily profile, to understand them better or to take them to the doctor. It is up to you; Tidewell works without.</source>
        <translation>Gespeicherte Messwerte ermöglichen die Auswertung: Zeit im Zielbereich, Mittelwerte und ein Tagesprofil, für ein besseres Verständnis oder für den Arzttermin. Sie entscheiden; Tidewell funktioniert auch ohne.</translation>
    </message>
    <message>
        <source>What</source>
        <translation>Was</translation>
    </message>
    <message>
        <source>Each reading from now on, for this account and person: value, trend and time. Nothing from before.</source>
        <translation>Jeder Messwert ab jetzt, für dieses Konto und diese Person: Wert, Trend und Zeit. Nichts von vorher.</translation>
    </message>
    <message>
        <source>Where</source>
        <translation>Wo</translation>
    </message>
    <message>
        <source>On this computer only, encrypted. Nothing is ever uploaded.</source>
        <translation>Nur auf diesem Computer, verschlüsselt. Es wird nie etwas hochgeladen.</translation>
    </message>
    <message>
        <source>Key</source>
        <translation>Schlüssel</translation>
    </message>
    <message>
        <source>How long</source>
        <translation>Wie lange</translation>
    </message>
    <message>
        <source>To stop</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>In the settings, at any time. What is saved stays.</source>
        <translation>In den Einstellungen, jederzeit. Was gespeichert ist, bleibt.</translation>
    </message>
    <message>
        <source>To delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>In the settings as well. It removes the readings, and their key last.</source>
        <translation>Ebenfalls in den Einstellungen. Dabei werden die Messwerte entfernt und zuletzt ihr Schlüssel.</translation>
    </message>
    <message>
        <source>&amp;Save readings on this computer</source>
        <translation>Messwerte auf diesem Computer &amp;speichern</translation>
    </message>
    <message>
        <source>Save readings?</source>
        <translation>Messwerte speichern?</translation>
    </message>
    <message>
        <source>%1 days; older readings are removed. The settings offer 30 and 90 days.</source>
        <translation>%1 Tage; ältere Messwerte werden entfernt. In den Einstellungen stehen 30 und 90 Tage zur Wahl.</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>It is kept where Tidewell keeps your password: in your keyring.</source>
        <translation>Er liegt dort, wo Tidewell Ihr Passwort aufbewahrt: in Ihrem Schlüsselbund.</translation>
    </message>
    <message>
        <source>It is kept where Tidewell keeps your password: in the file %1. Whoever can read your files can read it too.</source>
        <translation>Er liegt dort, wo Tidewell Ihr Passwort aufbewahrt: in der Datei %1. Wer Ihre Dateien lesen kann, kann auch ihn lesen.</translation>
    </message>
</context>
<context>
    <name>InsightsCharts</name>
    <message>
        <source>median</source>
        <translation>Median</translation>
    </message>
    <message>
        <source>middle 50%</source>
        <translation>mittlere 50 %</translation>
    </message>
    <message>
        <source>middle 90%</source>
        <translation>mittlere 90 %</translation>
    </message>
    <message>
        <source>target range</source>
        <translation>Zielbereich</translation>
    </message>
    <message>
        <source>median %1</source>
        <translation>Median %1</translation>
    </message>
    <message>
        <source>middle 50%: %1</source>
        <translation>mittlere 50 %: %1</translation>
    </message>
    <message>
        <source>middle 90%: %1</source>
        <translation>mittlere 90 %: %1</translation>
    </message>
    <message>
        <source>fewer than %1 days</source>
        <translation>weniger als %1 Tage</translation>
    </message>
    <message>
        <source>no readings</source>
        <translation>keine Messwerte</translation>
    </message>
</context>
<context>
    <name>InsightsReportDialog</name>
    <message>
        <source>PDF document</source>
        <translation>PDF-Dokument</translation>
    </message>
    <message>
        <source>PNG picture</source>
        <translation>PNG-Bild</translation>
    </message>
</context>
<context>
    <name>InsightsReportPage</name>
    <message>
        <source>Glucose report</source>
        <translation>Glukosebericht</translation>
    </message>
    <message>
        <source>Made on %1 (%2)</source>
        <translation>Erstellt am %1 (%2)</translation>
    </message>
    <message>
        <source>with Tidewell %1, offline on this computer</source>
        <translation>mit Tidewell %1, offline auf diesem Computer</translation>
    </message>
    <message>
        <source>%1 to %2, %3, time zone %4</source>
        <translation>%1 bis %2, %3, Zeitzone %4</translation>
    </message>
    <message>
        <source>1 day</source>
        <translation>1 Tag</translation>
    </message>
    <message>
        <source>%1 days</source>
        <translation>%1 Tage</translation>
    </message>
    <message>
        <source>Sensor active %1 of the time: %2 of %3, %4 readings</source>
        <translation>Sensor aktiv in %1 der Zeit: %2 von %3, %4 Messwerte</translation>
    </message>
    <message>
        <source>. History since %1</source>
        <translation>. Verlauf seit %1</translation>
    </message>
    <message>
        <source>Demonstration: these readings are not those of the person who made this page.</source>
        <translation>Vorführung: Diese Messwerte sind nicht die der Person, die diese Seite erstellt hat.</translation>
    </message>
    <message>
        <source>Saved readings of these days could not be read and are missing: %1.</source>
        <translation>Gespeicherte Messwerte dieser Tage konnten nicht gelesen werden und fehlen: %1.</translation>
    </message>
    <message>
        <source>Left out, since no sensor can have measured it: 1 reading.</source>
        <translation>Ausgelassen, weil kein Sensor ihn gemessen haben kann: 1 Messwert.</translation>
    </message>
    <message>
        <source>Left out, since no sensor can have measured them: %1 readings.</source>
        <translation>Ausgelassen, weil kein Sensor sie gemessen haben kann: %1 Messwerte.</translation>
    </message>
    <message>
        <source>and %1 more</source>
        <translation>und %1 weitere</translation>
    </message>
    <message>
        <source>Profile of a day, from 1 day with readings</source>
        <translation>Tagesprofil aus 1 Tag mit Messwerten</translation>
    </message>
    <message>
        <source>Profile of a day, from %1 days with readings</source>
        <translation>Tagesprofil aus %1 Tagen mit Messwerten</translation>
    </message>
    <message>
        <source>The profile needs readings of at least %1 different days.</source>
        <translation>Das Profil braucht Messwerte von mindestens %1 verschiedenen Tagen.</translation>
    </message>
    <message>
        <source>Time in ranges</source>
        <translation>Zeit in den Bereichen</translation>
    </message>
    <message>
        <source>Figures and their targets</source>
        <translation>Kennzahlen und ihre Zielwerte</translation>
    </message>
    <message>
        <source>by observed time</source>
        <translation>nach erfasster Zeit</translation>
    </message>
    <message>
        <source>target</source>
        <translation>Ziel</translation>
    </message>
    <message>
        <source>Targets of the international consensus for most adults with diabetes; yours may differ.</source>
        <translation>Zielwerte des internationalen Konsenses für die meisten Erwachsenen mit Diabetes; Ihre können abweichen.</translation>
    </message>
    <message>
        <source>none</source>
        <translation>keine</translation>
    </message>
    <message>
        <source>Mean glucose</source>
        <translation>Mittlere Glukose</translation>
    </message>
    <message>
        <source>GMI</source>
        <translation>GMI</translation>
    </message>
    <message>
        <source>Standard deviation</source>
        <translation>Standardabweichung</translation>
    </message>
    <message>
        <source>Variation (CV)</source>
        <translation>Variabilität (VK)</translation>
    </message>
    <message>
        <source>at most %1%</source>
        <translation>höchstens %1 %</translation>
    </message>
    <message>
        <source>Median</source>
        <translation>Median</translation>
    </message>
    <message>
        <source>Middle half</source>
        <translation>Mittlere Hälfte</translation>
    </message>
    <message>
        <source>%1 to %2</source>
        <translation>%1 bis %2</translation>
    </message>
    <message>
        <source>over 70%</source>
        <translation>über 70 %</translation>
    </message>
    <message>
        <source>Below %1</source>
        <translation>Unter %1</translation>
    </message>
    <message>
        <source>under 4%</source>
        <translation>unter 4 %</translation>
    </message>
    <message>
        <source>under 1%</source>
        <translation>unter 1 %</translation>
    </message>
    <message>
        <source>Above %1</source>
        <translation>Über %1</translation>
    </message>
    <message>
        <source>under 25%</source>
        <translation>unter 25 %</translation>
    </message>
    <message>
        <source>under 5%</source>
        <translation>unter 5 %</translation>
    </message>
    <message>
        <source>Sensor active</source>
        <translation>Sensor aktiv</translation>
    </message>
    <message>
        <source>at least 70%</source>
        <translation>mindestens 70 %</translation>
    </message>
    <message>
        <source>Episodes of at least 15 minutes</source>
        <translation>Episoden ab 15 Minuten</translation>
    </message>
    <message>
        <source>number</source>
        <translation>Anzahl</translation>
    </message>
    <message>
        <source>a week</source>
        <translation>pro Woche</translation>
    </message>
    <message>
        <source>longest</source>
        <translation>längste</translation>
    </message>
    <message>
        <source>, %1 over 2 h</source>
        <translation>, %1 über 2 h</translation>
    </message>
    <message>
        <source>Gaps may hide further episodes, and longer ones.</source>
        <translation>Lücken können weitere und längere Episoden verbergen.</translation>
    </message>
    <message>
        <source>Days</source>
        <translation>Tage</translation>
    </message>
    <message>
        <source>The newest %1 of %2 days</source>
        <translation>Die neuesten %1 von %2 Tagen</translation>
    </message>
    <message>
        <source>From midnight to midnight; the shading is the range from %1 to %2 %3, the upper edge is %4. The share is the time in range.</source>
        <translation>Von Mitternacht bis Mitternacht; schattiert ist der Bereich von %1 bis %2 %3, der obere Rand liegt bei %4. Der Anteil ist die Zeit im Zielbereich.</translation>
    </message>
    <message>
        <source>How this was calculated</source>
        <translation>Wie gerechnet wurde</translation>
    </message>
    <message>
        <source>Weighting: each reading stands for the time until the next one, at most for its sample duration. What is missing beyond that is a gap. Gaps are never bridged: they weigh nothing, curves stop at them, and episodes end there.</source>
        <translation>Gewichtung: Jeder Messwert steht für die Zeit bis zum nächsten, höchstens für sein Messintervall. Was darüber hinaus fehlt, ist eine Lücke. Lücken werden nie überbrückt: Sie haben kein Gewicht, Kurven brechen an ihnen ab und Episoden enden dort.</translation>
    </message>
    <message>
        <source>Mean, standard deviation (of the population, no n−1), percentiles and shares are weighted by that time. Variation is standard deviation by mean.</source>
        <translation>Mittelwert, Standardabweichung (der Grundgesamtheit, ohne n−1), Perzentile und Anteile sind nach dieser Zeit gewichtet. Variabilität ist Standardabweichung durch Mittelwert.</translation>
    </message>
    <message>
        <source>Bands, by exact values in mg/dL: very low below 54, low 54 to below 70, in range 70 to 180, high above 180 to 250, very high above 250. %1 In mmol/L values are divided by 18.</source>
        <translation>Bereiche nach genauen Werten in mg/dL: sehr niedrig unter 54, niedrig 54 bis unter 70, im Zielbereich 70 bis 180, hoch über 180 bis 250, sehr hoch über 250. %1 Für mmol/L werden die Werte durch 18 geteilt.</translation>
    </message>
    <message>
        <source>GMI = %1. %2.</source>
        <translation>GMI = %1. %2.</translation>
    </message>
    <message>
        <source>GMI: %1. %2</source>
        <translation>GMI: %1. %2</translation>
    </message>
    <message>
        <source>Profile: readings of all days by quarters of an hour of the local clock; the line is the median, the areas hold the middle 50% and 90%. Quarters with readings of fewer than %1 dates stay blank; curves are smoothed for display only.</source>
        <translation>Profil: Messwerte aller Tage nach Viertelstunden der Ortszeit; die Linie ist der Median, die Flächen enthalten die mittleren 50 % und 90 %. Viertelstunden mit Messwerten von weniger als %1 Tagen bleiben leer; Kurven sind nur für die Anzeige geglättet.</translation>
    </message>
    <message>
        <source>Episodes: at least 15 minutes beyond a threshold, ended by 15 minutes back; a week is a week of observed time. A low of over 2 hours is an extended one.</source>
        <translation>Episoden: mindestens 15 Minuten jenseits einer Grenze, beendet, wenn die Werte 15 Minuten lang wieder innerhalb der Grenze liegen; eine Woche ist eine Woche erfasster Zeit. Eine Episode niedriger Werte von mehr als 2 Stunden gilt als anhaltend.</translation>
    </message>
    <message>
        <source>Sources: bands, targets and coverage Battelino et al. 2019, doi 10.2337/dci19-0028; episodes Battelino et al. 2023, doi 10.1016/S2213-8587(22)00319-9; GMI Bergenstal et al. 2018, doi 10.2337/dc18-1581.</source>
        <translation>Quellen: Bereiche, Zielwerte und Abdeckung Battelino et al. 2019, doi 10.2337/dci19-0028; Episoden Battelino et al. 2023, doi 10.1016/S2213-8587(22)00319-9; GMI Bergenstal et al. 2018, doi 10.2337/dc18-1581.</translation>
    </message>
    <message>
        <source>Tidewell is no medical device. Nothing was sent anywhere to make this page.</source>
        <translation>Tidewell ist kein Medizinprodukt. Für diese Seite wurde nichts irgendwohin gesendet.</translation>
    </message>
</context>
<context>
    <name>LoginPage</name>
    <message>
        <source>Tidewell can only show values and alert you while it runs. When it starts together with the desktop, nobody has to remember it.</source>
        <translation>Tidewell kann nur Werte anzeigen und warnen, solange es läuft. Wenn es zusammen mit dem Desktop startet, muss niemand daran denken.</translation>
    </message>
    <message>
        <source>&amp;Start Tidewell when I log in</source>
        <translation>&amp;Tidewell beim Anmelden am Computer starten</translation>
    </message>
    <message>
        <source>Start at login</source>
        <translation>Start mit dem Computer</translation>
    </message>
    <message>
        <source>Now: your desktop starts Tidewell when you log in.</source>
        <translation>Jetzt: Ihr Desktop startet Tidewell, wenn Sie sich anmelden.</translation>
    </message>
    <message>
        <source>Now: your desktop does not start Tidewell by itself.</source>
        <translation>Jetzt: Ihr Desktop startet Tidewell nicht von selbst.</translation>
    </message>
</context>
<context>
    <name>NoteRow</name>
    <message>
        <source>Warning: %1</source>
        <translation>Achtung: %1</translation>
    </message>
</context>
<context>
    <name>PersonName</name>
    <message>
        <source>No name</source>
        <translation>Ohne Namen</translation>
    </message>
</context>
<context>
    <name>PersonPage</name>
    <message>
        <source>Who is it about?</source>
        <translation>Um wen geht es?</translation>
    </message>
    <message>
        <source>Check &amp;again</source>
        <translation>Erneut &amp;prüfen</translation>
    </message>
</context>
<context>
    <name>SettingsAboutPage</name>
    <message>
        <source>windows, desktop bus, pictures</source>
        <translation>Fenster, Desktop-Bus, Bilder</translation>
    </message>
    <message>
        <source>tasks, JSON documents</source>
        <translation>Abläufe, JSON-Dokumente</translation>
    </message>
    <message>
        <source>connections to the glucose services</source>
        <translation>Verbindungen zu den Glukosediensten</translation>
    </message>
    <message>
        <source>encryption</source>
        <translation>Verschlüsselung</translation>
    </message>
    <message>
        <source>text</source>
        <translation>Text</translation>
    </message>
    <message>
        <source>log</source>
        <translation>Protokoll</translation>
    </message>
    <message>
        <source>command line</source>
        <translation>Befehlszeile</translation>
    </message>
    <message>
        <source>saved readings</source>
        <translation>gespeicherte Messwerte</translation>
    </message>
    <message>
        <source>time zones</source>
        <translation>Zeitzonen</translation>
    </message>
    <message>
        <source>keyring</source>
        <translation>Schlüsselbund</translation>
    </message>
    <message>
        <source>network state</source>
        <translation>Netzwerkzustand</translation>
    </message>
    <message>
        <source>alert sounds</source>
        <translation>Warntöne</translation>
    </message>
    <message>
        <source>state of the sound output</source>
        <translation>Zustand der Tonausgabe</translation>
    </message>
    <message>
        <source>the demonstration&apos;s answers</source>
        <translation>Antworten der Vorführung</translation>
    </message>
    <message>
        <source>The demonstration replays real readings that were published for research; nobody may try to identify a participant. Both were taken from the harmonised files of the Glucose-ML collection (Prioleau, Lu, Cui, 2025, arXiv:2507.14077).</source>
        <translation>Die Vorführung spielt echte Messwerte ab, die für die Forschung veröffentlicht wurden; niemand darf versuchen, Teilnehmende zu identifizieren. Beide stammen aus den vereinheitlichten Dateien der Sammlung Glucose-ML (Prioleau, Lu, Cui, 2025, arXiv:2507.14077).</translation>
    </message>
    <message>
        <source>Dexcom: seven days of subject c2s04 of PhysioCGM (Quamer et al., 2025, figshare, https://doi.org/10.6084/m9.figshare.28136294.v1), CC0 1.0. Changes: seven days cut out, times rounded to seconds, rows without a value dropped, “Low” written as 39.</source>
        <translation>Dexcom: sieben Tage der Person c2s04 aus PhysioCGM (Quamer et al., 2025, figshare, https://doi.org/10.6084/m9.figshare.28136294.v1), CC0 1.0. Änderungen: sieben Tage ausgeschnitten, Zeiten auf Sekunden gerundet, Zeilen ohne Wert ausgelassen, „Low“ als 39 geschrieben.</translation>
    </message>
    <message>
        <source>LibreLinkUp: seven days of participant P13 of the BrisT1D-Open Dataset (James, Armstrong, O&apos;Kane, Emerson, Abdallah, 2025, University of Bristol, https://doi.org/10.5523/bris.33z5jc8fa6tob21ptrugzqog08), licensed under CC BY 4.0 (https://creativecommons.org/licenses/by/4.0/), without any warranty. Changes: time zones corrected where possible, duplicates removed, mmol/L multiplied by 18 and rounded, seven days cut out, values between the readings computed.</source>
        <translation>LibreLinkUp: sieben Tage der Person P13 aus dem BrisT1D-Open Dataset (James, Armstrong, O&apos;Kane, Emerson, Abdallah, 2025, University of Bristol, https://doi.org/10.5523/bris.33z5jc8fa6tob21ptrugzqog08), lizenziert unter CC BY 4.0 (https://creativecommons.org/licenses/by/4.0/), ohne jede Gewähr. Änderungen: Zeitzonen wo möglich berichtigt, Doppelte entfernt, mmol/L mit 18 multipliziert und gerundet, sieben Tage ausgeschnitten, Werte zwischen den Messwerten berechnet.</translation>
    </message>
</context>
<context>
    <name>SettingsAlertsPage</name>
    <message>
        <source>Never</source>
        <translation>Nie</translation>
    </message>
    <message>
        <source>After 1 minute</source>
        <translation>Nach 1 Minute</translation>
    </message>
    <message>
        <source>After %1 minutes</source>
        <translation>Nach %1 Minuten</translation>
    </message>
</context>
<context>
    <name>SettingsTexts</name>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Note</source>
        <translation>Hinweis</translation>
    </message>
    <message>
        <source>Good</source>
        <translation>Gut</translation>
    </message>
    <message>
        <source>Caution</source>
        <translation>Vorsicht</translation>
    </message>
    <message>
        <source>Problem</source>
        <translation>Problem</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>TermsPage</name>
    <message>
        <source>I &amp;accept the terms of use</source>
        <translation>Ich &amp;nehme die Nutzungsbedingungen an</translation>
    </message>
    <message>
        <source>Terms of use</source>
        <translation>Nutzungsbedingungen</translation>
    </message>
</context>
<context>
    <name>TimeWindowPicker</name>
    <message>
        <source>Time window of the graph</source>
        <translation>Zeitfenster der Kurve</translation>
    </message>
    <message>
        <source>%1 h</source>
        <translation>%1 h</translation>
    </message>
</context>
<context>
    <name>WelcomePage</name>
    <message>
        <source>The value, always in sight</source>
        <translation>Der Wert, immer im Blick</translation>
    </message>
    <message>
        <source>Your panel shows the current glucose value and its trend, and says when it gets old.</source>
        <translation>Ihre Leiste zeigt den aktuellen Glukosewert und seinen Trend und sagt, wenn er veraltet.</translation>
    </message>
    <message>
        <source>Alerts on this computer</source>
        <translation>Warnungen an diesem Computer</translation>
    </message>
    <message>
        <source>A notification with a sound when it is low or high, changes rapidly, or stops coming.</source>
        <translation>Eine Benachrichtigung mit Ton, wenn der Wert niedrig oder hoch ist, sich schnell ändert oder ausbleibt.</translation>
    </message>
    <message>
        <source>Private</source>
        <translation>Privat</translation>
    </message>
    <message>
        <source>Tidewell asks your sharing service directly. Readings stay on this computer.</source>
        <translation>Tidewell fragt den Dienst, über den die Messwerte geteilt werden, direkt ab. Die Messwerte bleiben auf diesem Computer.</translation>
    </message>
    <message>
        <source>Tidewell is not a medical device</source>
        <translation>Tidewell ist kein Medizinprodukt</translation>
    </message>
    <message>
        <source>Do not make treatment decisions by what it shows.</source>
        <translation>Treffen Sie keine Behandlungsentscheidungen nach dem, was es anzeigt.</translation>
    </message>
    <message>
        <source>Keep the alarms of the phone or receiver switched on. A computer may be asleep, muted or offline when it matters.</source>
        <translation>Lassen Sie die Alarme von Telefon oder Empfänger eingeschaltet. Ein Computer kann in Bereitschaft, stumm oder offline sein, wenn es darauf ankommt.</translation>
    </message>
    <message>
        <source>Setting up takes about two minutes. You need the account of Dexcom Share or LibreLinkUp.</source>
        <translation>Die Einrichtung dauert etwa zwei Minuten. Sie brauchen das Konto von Dexcom Share oder LibreLinkUp.</translation>
    </message>
    <message>
        <source>Welcome to Tidewell</source>
        <translation>Willkommen bei Tidewell</translation>
    </message>
</context>
<context>
    <name>tidewell::AccountForm</name>
    <message>
        <source>United States</source>
        <translation>Vereinigte Staaten</translation>
    </message>
    <message>
        <source>Outside the United States</source>
        <translation>Außerhalb der Vereinigten Staaten</translation>
    </message>
    <message>
        <source>Japan</source>
        <translation>Japan</translation>
    </message>
    <message>
        <source>Asia and Pacific</source>
        <translation>Asien und Pazifik</translation>
    </message>
    <message>
        <source>Australia</source>
        <translation>Australien</translation>
    </message>
    <message>
        <source>Canada</source>
        <translation>Kanada</translation>
    </message>
    <message>
        <source>China</source>
        <translation>China</translation>
    </message>
    <message>
        <source>Europe</source>
        <translation>Europa</translation>
    </message>
    <message>
        <source>Europe 2</source>
        <translation>Europa 2</translation>
    </message>
    <message>
        <source>France</source>
        <translation>Frankreich</translation>
    </message>
    <message>
        <source>Germany</source>
        <translation>Deutschland</translation>
    </message>
    <message>
        <source>Latin America</source>
        <translation>Lateinamerika</translation>
    </message>
    <message>
        <source>Russia</source>
        <translation>Russland</translation>
    </message>
    <message>
        <source>United Arab Emirates</source>
        <translation>Vereinigte Arabische Emirate</translation>
    </message>
    <message>
        <source>Use the account that publishes the readings: the one signed in on the phone that receives the sensor. A follower&apos;s account does not work. Sharing must be turned on in the sensor app, with at least one follower.</source>
        <translation>Verwenden Sie das Konto, das die Messwerte veröffentlicht: das Konto, mit dem das Telefon angemeldet ist, das den Sensor empfängt. Das Konto eines Followers funktioniert nicht. Das Teilen muss in der Sensor-App eingeschaltet sein, mit mindestens einem Follower.</translation>
    </message>
    <message>
        <source>&amp;User name:</source>
        <translation>&amp;Benutzername:</translation>
    </message>
    <message>
        <source>User name</source>
        <translation>Benutzername</translation>
    </message>
    <message>
        <source>Use a follower&apos;s account: the one signed in to the LibreLinkUp app. Whoever wears the sensor must have invited it in the Libre app, under the connected apps. If that is you, invite yourself. When you are not sure of the region, choose a near one: the service knows the right one.</source>
        <translation>Verwenden Sie das Konto eines Followers: das Konto, mit dem die LibreLinkUp-App angemeldet ist. Wer den Sensor trägt, muss es in der Libre-App unter den verbundenen Apps eingeladen haben. Wenn Sie das sind, laden Sie sich selbst ein. Wenn Sie bei der Region unsicher sind, wählen Sie eine nahe gelegene: Der Dienst kennt die richtige.</translation>
    </message>
    <message>
        <source>&amp;E-mail:</source>
        <translation>&amp;E-Mail:</translation>
    </message>
    <message>
        <source>E-mail</source>
        <translation>E-Mail</translation>
    </message>
    <message>
        <source>Glucose service</source>
        <translation>Glukosedienst</translation>
    </message>
    <message>
        <source>Region of the account</source>
        <translation>Region des Kontos</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>S&amp;how password</source>
        <translation>Passwort a&amp;nzeigen</translation>
    </message>
    <message>
        <source>Ser&amp;vice:</source>
        <translation>&amp;Dienst:</translation>
    </message>
    <message>
        <source>&amp;Region:</source>
        <translation>&amp;Region:</translation>
    </message>
    <message>
        <source>&amp;Password:</source>
        <translation>&amp;Passwort:</translation>
    </message>
    <message>
        <source>User name, e-mail address, or phone number with + and country code</source>
        <translation>Benutzername, E-Mail-Adresse oder Telefonnummer mit + und Landesvorwahl</translation>
    </message>
    <message>
        <source>The follower&apos;s address, as in the LibreLinkUp app</source>
        <translation>Die Adresse des Followers, wie in der LibreLinkUp-App</translation>
    </message>
    <message>
        <source>Leave empty to use the stored password.</source>
        <translation>Leer lassen, um das gespeicherte Passwort zu verwenden.</translation>
    </message>
</context>
<context>
    <name>tidewell::InsightsChartView</name>
    <message>
        <source>Arrow keys go from item to item, Enter opens one.</source>
        <translation>Pfeiltasten gehen von Eintrag zu Eintrag, die Eingabetaste öffnet einen.</translation>
    </message>
    <message>
        <source>Arrow keys go from item to item, Enter keeps one selected, Escape lets it go.</source>
        <translation>Pfeiltasten gehen von Eintrag zu Eintrag, die Eingabetaste hält einen fest, Esc lässt ihn los.</translation>
    </message>
    <message>
        <source>Arrow keys go from item to item.</source>
        <translation>Pfeiltasten gehen von Eintrag zu Eintrag.</translation>
    </message>
</context>
<context>
    <name>tidewell::InsightsDayDialog</name>
    <message>
        <source>← &amp;Earlier day</source>
        <translation>← &amp;Früherer Tag</translation>
    </message>
    <message>
        <source>Earlier day</source>
        <translation>Früherer Tag</translation>
    </message>
    <message>
        <source>&amp;Later day →</source>
        <translation>S&amp;päterer Tag →</translation>
    </message>
    <message>
        <source>Later day</source>
        <translation>Späterer Tag</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Schließen</translation>
    </message>
    <message>
        <source>No readings</source>
        <translation>Keine Messwerte</translation>
    </message>
    <message>
        <source>Mean %1 %2, %3% in range, %4 readings</source>
        <translation>Mittelwert %1 %2, %3 % im Zielbereich, %4 Messwerte</translation>
    </message>
    <message>
        <source>, %1 of %2 covered</source>
        <translation>, %1 von %2 abgedeckt</translation>
    </message>
</context>
<context>
    <name>tidewell::InsightsEpisodesModel</name>
    <message>
        <source>Below %1 %2</source>
        <translation>Unter %1 %2</translation>
    </message>
    <message>
        <source>Above %1 %2</source>
        <translation>Über %1 %2</translation>
    </message>
    <message>
        <source>over 2 hours</source>
        <translation>über 2 Stunden</translation>
    </message>
    <message>
        <source>begins after a gap</source>
        <translation>beginnt nach einer Lücke</translation>
    </message>
    <message>
        <source>ends in a gap</source>
        <translation>endet in einer Lücke</translation>
    </message>
    <message>
        <source>Began</source>
        <translation>Beginn</translation>
    </message>
    <message>
        <source>Lasted</source>
        <translation>Dauer</translation>
    </message>
    <message>
        <source>Kind</source>
        <translation>Art</translation>
    </message>
    <message>
        <source>Lowest or highest</source>
        <translation>Niedrigster oder höchster Wert</translation>
    </message>
    <message>
        <source>Remarks</source>
        <translation>Bemerkungen</translation>
    </message>
</context>
<context>
    <name>tidewell::InsightsPanel</name>
    <message>
        <source>%1 to %2</source>
        <translation>%1 bis %2</translation>
    </message>
    <message>
        <source>%1: blank, readings from %2 only</source>
        <translation>%1: leer, nur Messwerte von: %2</translation>
    </message>
    <message>
        <source>%1: median %2, middle half %3 to %4, middle 90% %5 to %6, %7</source>
        <translation>%1: Median %2, mittlere Hälfte %3 bis %4, mittlere 90 % %5 bis %6, %7</translation>
    </message>
    <message>
        <source>Ambulatory glucose profile: blank, too few days with readings</source>
        <translation>Ambulantes Glukoseprofil: leer, zu wenige Tage mit Messwerten</translation>
    </message>
    <message>
        <source>Ambulatory glucose profile of %1. The median is lowest at %2, %3, and highest at %4, %5.</source>
        <translation>Ambulantes Glukoseprofil über %1. Der Median ist am niedrigsten um %2, %3, und am höchsten um %4, %5.</translation>
    </message>
    <message>
        <source>Time in ranges</source>
        <translation>Zeit in den Bereichen</translation>
    </message>
    <message>
        <source>Daily curves: %1 of %2 with readings</source>
        <translation>Tageskurven: %1 von %2 mit Messwerten</translation>
    </message>
    <message>
        <source>Coverage by day: %1 covered, %2 of %3 below 70%</source>
        <translation>Abdeckung nach Tagen: %1 abgedeckt, %2 von %3 unter 70 %</translation>
    </message>
    <message>
        <source>%1: %2 covered</source>
        <translation>%1: %2 abgedeckt</translation>
    </message>
    <message>
        <source>Coverage by hour of the day</source>
        <translation>Abdeckung nach Stunden des Tages</translation>
    </message>
    <message>
        <source>: lowest from %1, %2 covered</source>
        <translation>: am geringsten ab %1, %2 abgedeckt</translation>
    </message>
    <message>
        <source>%1 to %2: %3 covered</source>
        <translation>%1 bis %2: %3 abgedeckt</translation>
    </message>
    <message>
        <source>, longest %1</source>
        <translation>, längste %1</translation>
    </message>
    <message>
        <source>, over 2 hours: %1</source>
        <translation>, über 2 Stunden: %1</translation>
    </message>
    <message>
        <source>%1: no readings</source>
        <translation>%1: keine Messwerte</translation>
    </message>
    <message>
        <source>%1: mean %2, %3 in range, %4</source>
        <translation>%1: Mittelwert %2, %3 im Zielbereich, %4</translation>
    </message>
    <message>
        <source>Demonstration: a week of somebody else&apos;s readings, repeated. Nothing of it is kept.</source>
        <translation>Vorführung: eine Woche mit den Messwerten eines anderen Menschen, wiederholt. Nichts davon wird aufbewahrt.</translation>
    </message>
    <message>
        <source>The saved readings of these days cannot be read, and are missing here: %1.</source>
        <translation>Die gespeicherten Messwerte dieser Tage können nicht gelesen werden und fehlen hier: %1.</translation>
    </message>
    <message>
        <source>Left out, since no sensor can have measured it: %1.</source>
        <translation>Ausgelassen, weil kein Sensor das gemessen haben kann: %1.</translation>
    </message>
    <message>
        <source>Time in range</source>
        <translation>Zeit im Zielbereich</translation>
    </message>
    <message>
        <source>Mean glucose</source>
        <translation>Mittlere Glukose</translation>
    </message>
    <message>
        <source>GMI</source>
        <translation>GMI</translation>
    </message>
    <message>
        <source>Variation (CV)</source>
        <translation>Variabilität (VK)</translation>
    </message>
    <message>
        <source>Target: at most %1%</source>
        <translation>Ziel: höchstens %1 %</translation>
    </message>
    <message>
        <source>Standard deviation</source>
        <translation>Standardabweichung</translation>
    </message>
    <message>
        <source>Median</source>
        <translation>Median</translation>
    </message>
    <message>
        <source>The middle half lies from %1 to %2.</source>
        <translation>Die mittlere Hälfte liegt zwischen %1 und %2.</translation>
    </message>
    <message>
        <source>Time active</source>
        <translation>Sensor aktiv</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 / %2</translation>
    </message>
    <message>
        <source>Readings</source>
        <translation>Messwerte</translation>
    </message>
    <message>
        <source>On %1</source>
        <translation>Verteilt auf %1</translation>
    </message>
    <message>
        <source>&amp;Dismiss</source>
        <translation>A&amp;usblenden</translation>
    </message>
    <message>
        <source>&amp;Insights settings</source>
        <translation>&amp;Einstellungen der Auswertung</translation>
    </message>
    <message>
        <source>Ambulatory glucose profile</source>
        <translation>Ambulantes Glukoseprofil</translation>
    </message>
    <message>
        <source>Daily curves</source>
        <translation>Tageskurven</translation>
    </message>
    <message>
        <source>A click opens a day, as do the arrow keys and Enter.</source>
        <translation>Ein Klick öffnet einen Tag, ebenso Pfeiltasten und Eingabetaste.</translation>
    </message>
    <message>
        <source>Coverage by day</source>
        <translation>Abdeckung nach Tagen</translation>
    </message>
    <message>
        <source>Coverage by hour</source>
        <translation>Abdeckung nach Stunden</translation>
    </message>
    <message>
        <source>Episodes</source>
        <translation>Episoden</translation>
    </message>
    <message>
        <source>At least 15 minutes beyond a limit, ended by 15 minutes back. Gaps are never bridged: an episode ends where readings are missing. Double-click or Enter opens its day.</source>
        <translation>Mindestens 15 Minuten jenseits einer Grenze, beendet, wenn die Werte 15 Minuten lang wieder innerhalb der Grenze liegen. Lücken werden nie überbrückt: Eine Episode endet, wo Messwerte fehlen. Doppelklick oder Eingabetaste öffnet ihren Tag.</translation>
    </message>
    <message>
        <source>Episodes, the newest first</source>
        <translation>Episoden, die neuesten zuerst</translation>
    </message>
    <message>
        <source>%1 to %2, %3</source>
        <translation>%1 bis %2, %3</translation>
    </message>
    <message>
        <source>Time in range: %1</source>
        <translation>Zeit im Zielbereich: %1</translation>
    </message>
    <message>
        <source>Mean glucose: %1</source>
        <translation>Mittlere Glukose: %1</translation>
    </message>
</context>
<context>
    <name>tidewell::InsightsReportDialog</name>
    <message>
        <source>Saving…</source>
        <translation>Speichern…</translation>
    </message>
    <message>
        <source>Save &amp;as…</source>
        <translation>Speichern &amp;unter…</translation>
    </message>
    <message>
        <source>Save report</source>
        <translation>Bericht speichern</translation>
    </message>
    <message>
        <source>A4</source>
        <translation>A4</translation>
    </message>
    <message>
        <source>US Letter</source>
        <translation>US Letter</translation>
    </message>
    <message>
        <source>Leave empty for a page without a name</source>
        <translation>Leer lassen für eine Seite ohne Namen</translation>
    </message>
    <message>
        <source>Attach the &amp;readings as CSV, in a file beside it</source>
        <translation>Die &amp;Messwerte als CSV in einer Datei daneben beifügen</translation>
    </message>
    <message>
        <source>&amp;Kind:</source>
        <translation>&amp;Art:</translation>
    </message>
    <message>
        <source>&amp;Paper:</source>
        <translation>&amp;Papier:</translation>
    </message>
    <message>
        <source>&amp;Name on the page:</source>
        <translation>&amp;Name auf der Seite:</translation>
    </message>
    <message>
        <source>One page for the doctor: the figures, the profile and the newest days of this period. It is made on this computer, and nothing is sent anywhere.</source>
        <translation>Eine Seite für die Arztpraxis: die Kennzahlen, das Profil und die neuesten Tage dieses Zeitraums. Sie entsteht auf diesem Computer, und nichts wird irgendwohin gesendet.</translation>
    </message>
    <message>
        <source>What is saved is not encrypted: whoever can open the file can read it.</source>
        <translation>Was gespeichert wird, ist nicht verschlüsselt: Wer die Datei öffnen kann, kann sie lesen.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>The report is saved. The saved readings of these days cannot be read, and are missing in the attached file: %1.</source>
        <translation>Der Bericht ist gespeichert. Die gespeicherten Messwerte dieser Tage können nicht gelesen werden und fehlen in der beigefügten Datei: %1.</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>tidewell::InsightsWindow</name>
    <message>
        <source>The period is %1.</source>
        <translation>Der Zeitraum ist %1.</translation>
    </message>
    <message>
        <source>The period is %1 to %2.</source>
        <translation>Der Zeitraum ist %1 bis %2.</translation>
    </message>
    <message>
        <source>This is the demonstration, with somebody else&apos;s readings. </source>
        <translation>Dies ist die Vorführung mit den Messwerten eines anderen Menschen. </translation>
    </message>
    <message>
        <source>Pick another period.</source>
        <translation>Wählen Sie einen anderen Zeitraum.</translation>
    </message>
    <message>
        <source>The last day was moved too: a period cannot end before it begins.</source>
        <translation>Der letzte Tag wurde mitverschoben: Ein Zeitraum kann nicht enden, bevor er beginnt.</translation>
    </message>
    <message>
        <source>The first day was moved too: a period cannot end before it begins.</source>
        <translation>Der erste Tag wurde mitverschoben: Ein Zeitraum kann nicht enden, bevor er beginnt.</translation>
    </message>
    <message>
        <source>&amp;Period:</source>
        <translation>&amp;Zeitraum:</translation>
    </message>
    <message>
        <source>Period</source>
        <translation>Zeitraum</translation>
    </message>
    <message>
        <source>Last %1 days</source>
        <translation>Letzte %1 Tage</translation>
    </message>
    <message>
        <source>From – to…</source>
        <translation>Von – bis…</translation>
    </message>
    <message>
        <source>First day of the period</source>
        <translation>Erster Tag des Zeitraums</translation>
    </message>
    <message>
        <source>Last day of the period</source>
        <translation>Letzter Tag des Zeitraums</translation>
    </message>
    <message>
        <source>&amp;Save report…</source>
        <translation>&amp;Bericht speichern…</translation>
    </message>
    <message>
        <source>Initial 3-day collection</source>
        <translation>Erste 3 Tage der Aufzeichnung</translation>
    </message>
    <message>
        <source>Collection: %p%</source>
        <translation>Aufzeichnung: %p %</translation>
    </message>
    <message>
        <source>Coverage of the latest 3 days</source>
        <translation>Abdeckung der letzten 3 Tage</translation>
    </message>
    <message>
        <source>Coverage: %p%</source>
        <translation>Abdeckung: %p %</translation>
    </message>
    <message>
        <source>&amp;Try again</source>
        <translation>Erneut &amp;versuchen</translation>
    </message>
    <message>
        <source>&amp;Insights settings</source>
        <translation>&amp;Einstellungen der Auswertung</translation>
    </message>
    <message>
        <source>Insights</source>
        <translation>Auswertung</translation>
    </message>
    <message>
        <source>Report</source>
        <translation>Bericht</translation>
    </message>
</context>
<context>
    <name>tidewell::OnboardingWindow</name>
    <message>
        <source>Step %1 of %2</source>
        <translation>Schritt %1 von %2</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>&amp;Finish</source>
        <translation>&amp;Fertig</translation>
    </message>
    <message>
        <source>&amp;Continue</source>
        <translation>&amp;Weiter</translation>
    </message>
    <message>
        <source>Working</source>
        <translation>In Arbeit</translation>
    </message>
    <message>
        <source>Cl&amp;ose</source>
        <translation>S&amp;chließen</translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation>&amp;Zurück</translation>
    </message>
    <message>
        <source>Set up Tidewell</source>
        <translation>Tidewell einrichten</translation>
    </message>
    <message>
        <source>Set up Tidewell. %1</source>
        <translation>Tidewell einrichten. %1</translation>
    </message>
</context>
<context>
    <name>tidewell::PeopleForm</name>
    <message>
        <source>&amp;Whose readings do you want to see?</source>
        <translation>Wessen &amp;Messwerte möchten Sie sehen?</translation>
    </message>
    <message>
        <source>People who share their readings with you</source>
        <translation>Personen, die ihre Messwerte mit Ihnen teilen</translation>
    </message>
    <message>
        <source>Shared with %1:</source>
        <translation>Mit %1 geteilt:</translation>
    </message>
    <message>
        <source>Choose a person to go on.</source>
        <translation>Wählen Sie eine Person aus, um fortzufahren.</translation>
    </message>
</context>
<context>
    <name>tidewell::SettingsAboutPage</name>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Tidewell %1</source>
        <translation>Tidewell %1</translation>
    </message>
    <message>
        <source>Shows the current reading of a continuous glucose monitor in the status area.</source>
        <translation>Zeigt den aktuellen Messwert eines Glukosesensors (CGM) im Statusbereich.</translation>
    </message>
    <message>
        <source>Tidewell is not a medical device. Readings can be late, missing or wrong, and alerts can fail. Do not decide about treatment by it, and keep the alarms of your sensor&apos;s own app or receiver on.</source>
        <translation>Tidewell ist kein Medizinprodukt. Messwerte können verspätet, unvollständig oder falsch sein, und Warnungen können ausbleiben. Entscheiden Sie nicht danach über die Behandlung, und lassen Sie die Alarme der App oder des Empfängers Ihres Sensors eingeschaltet.</translation>
    </message>
    <message>
        <source>Show &amp;terms of use…</source>
        <translation>&amp;Nutzungsbedingungen anzeigen…</translation>
    </message>
    <message>
        <source>Would an alert be seen and heard now?</source>
        <translation>Würde eine Warnung jetzt gesehen und gehört?</translation>
    </message>
    <message>
        <source>What was found</source>
        <translation>Was gefunden wurde</translation>
    </message>
    <message>
        <source>&amp;Look again</source>
        <translation>&amp;Erneut nachsehen</translation>
    </message>
    <message>
        <source>&amp;Copy report</source>
        <translation>Bericht &amp;kopieren</translation>
    </message>
    <message>
        <source>Copies what was found: no account and no readings</source>
        <translation>Kopiert, was gefunden wurde: kein Konto und keine Messwerte</translation>
    </message>
    <message>
        <source>Licences</source>
        <translation>Lizenzen</translation>
    </message>
    <message>
        <source>Tidewell is free software under the Apache License, version 2.0, without warranty of any kind. It is built with the work of others:</source>
        <translation>Tidewell ist freie Software unter der Apache License, Version 2.0, ohne jede Gewährleistung. Es baut auf der Arbeit anderer auf:</translation>
    </message>
    <message>
        <source>Components and their licences</source>
        <translation>Bestandteile und ihre Lizenzen</translation>
    </message>
    <message>
        <source>Component</source>
        <translation>Bestandteil</translation>
    </message>
    <message>
        <source>Used for</source>
        <translation>Verwendet für</translation>
    </message>
    <message>
        <source>Licence</source>
        <translation>Lizenz</translation>
    </message>
    <message>
        <source>Readings of the demonstration</source>
        <translation>Messwerte der Vorführung</translation>
    </message>
    <message>
        <source>Looking… this takes a few seconds.</source>
        <translation>Es wird nachgesehen… das dauert einige Sekunden.</translation>
    </message>
    <message>
        <source>Nobody has looked yet.</source>
        <translation>Es wurde noch nicht nachgesehen.</translation>
    </message>
    <message>
        <source>Sign in on the tab “Account”.</source>
        <translation>Melden Sie sich im Reiter „Konto“ an.</translation>
    </message>
    <message>
        <source>Looked at %1</source>
        <translation>Nachgesehen: %1</translation>
    </message>
    <message>
        <source>Looking… this takes a few seconds. What was found at %1 may no longer be so:</source>
        <translation>Es wird nachgesehen… das dauert einige Sekunden. Der Befund von %1 ist vielleicht überholt:</translation>
    </message>
    <message>
        <source>Looked at %1: nothing stands in the way of an alert.</source>
        <translation>Nachgesehen um %1: Einer Warnung steht nichts im Weg.</translation>
    </message>
    <message>
        <source>Looked at %1. What was found, the worst first:</source>
        <translation>Nachgesehen um %1. Der Befund, das Schlimmste zuerst:</translation>
    </message>
</context>
<context>
    <name>tidewell::SettingsAccountPage</name>
    <message>
        <source>Glucose service</source>
        <translation>Glukosedienst</translation>
    </message>
    <message>
        <source>Nobody is signed in, so there are no readings. “Sign in…” asks for the account of your glucose service.</source>
        <translation>Niemand ist angemeldet, deshalb gibt es keine Messwerte. „Anmelden…“ fragt nach dem Konto Ihres Glukosedienstes.</translation>
    </message>
    <message>
        <source>Service:</source>
        <translation>Dienst:</translation>
    </message>
    <message>
        <source>User name:</source>
        <translation>Benutzername:</translation>
    </message>
    <message>
        <source>Region:</source>
        <translation>Region:</translation>
    </message>
    <message>
        <source>Person:</source>
        <translation>Person:</translation>
    </message>
    <message>
        <source>Password:</source>
        <translation>Passwort:</translation>
    </message>
    <message>
        <source>&amp;Reconnect</source>
        <translation>&amp;Neu verbinden</translation>
    </message>
    <message>
        <source>Sign &amp;out…</source>
        <translation>A&amp;bmelden…</translation>
    </message>
    <message>
        <source>The account and its password are removed from this computer. No readings and no alerts come until somebody signs in again.</source>
        <translation>Das Konto und sein Passwort werden von diesem Computer entfernt. Es kommen keine Messwerte und keine Warnungen, bis sich wieder jemand anmeldet.</translation>
    </message>
    <message>
        <source>Sign out</source>
        <translation>Abmelden</translation>
    </message>
    <message>
        <source>Sign out of %1?</source>
        <translation>Von %1 abmelden?</translation>
    </message>
    <message>
        <source>Sign &amp;out</source>
        <translation>&amp;Abmelden</translation>
    </message>
    <message>
        <source>E-mail:</source>
        <translation>E-Mail:</translation>
    </message>
    <message>
        <source>Nobody is chosen yet</source>
        <translation>Noch niemand gewählt</translation>
    </message>
    <message>
        <source>Not there, or it cannot be read</source>
        <translation>Nicht vorhanden oder nicht lesbar</translation>
    </message>
    <message>
        <source>&amp;Sign in…</source>
        <translation>&amp;Anmelden…</translation>
    </message>
    <message>
        <source>&amp;Sign in again…</source>
        <translation>Erneut &amp;anmelden…</translation>
    </message>
    <message>
        <source>&amp;Switch account…</source>
        <translation>&amp;Konto wechseln…</translation>
    </message>
    <message>
        <source>Please wait: the account is being changed.</source>
        <translation>Bitte warten: Das Konto wird geändert.</translation>
    </message>
    <message>
        <source>&amp;Delete saved readings too</source>
        <translation>Auch gespeicherte Messwerte &amp;löschen</translation>
    </message>
    <message>
        <source>Choose “Sign in again…” below.</source>
        <translation>Wählen Sie unten „Erneut anmelden…“.</translation>
    </message>
    <message>
        <source>Choose “Sign in…” below.</source>
        <translation>Wählen Sie unten „Anmelden…“.</translation>
    </message>
    <message>
        <source>stored nowhere: this is a demonstration</source>
        <translation>nirgends gespeichert: Dies ist eine Vorführung</translation>
    </message>
    <message>
        <source>stored in your keyring</source>
        <translation>in Ihrem Schlüsselbund gespeichert</translation>
    </message>
    <message>
        <source>stored in the file %1. Whoever can read your files can read it too.</source>
        <translation>in der Datei %1 gespeichert. Wer Ihre Dateien lesen kann, kann es auch lesen.</translation>
    </message>
    <message>
        <source>Saved readings stay on this computer, encrypted, and are there again after signing in with this account, unless you delete them here:</source>
        <translation>Gespeicherte Messwerte bleiben verschlüsselt auf diesem Computer und sind nach dem Anmelden mit diesem Konto wieder da, außer Sie löschen sie hier:</translation>
    </message>
    <message>
        <source>Show &amp;terms…</source>
        <translation>&amp;Nutzungsbedingungen anzeigen…</translation>
    </message>
    <message>
        <source>&amp;Finish setting up…</source>
        <translation>&amp;Einrichtung abschließen…</translation>
    </message>
    <message>
        <source>Trying again…</source>
        <translation>Es wird erneut versucht …</translation>
    </message>
    <message>
        <source>Choose “Show terms…” below.</source>
        <translation>Wählen Sie unten „Nutzungsbedingungen anzeigen…“.</translation>
    </message>
    <message>
        <source>Choose “Finish setting up…” below.</source>
        <translation>Wählen Sie unten „Einrichtung abschließen…“.</translation>
    </message>
</context>
<context>
    <name>tidewell::SettingsAlertsPage</name>
    <message>
        <source>Enable notifications in System Settings &gt; Notifications to receive glucose alerts.</source>
        <translation>Schalten Sie die Benachrichtigungen in den Systemeinstellungen unter „Benachrichtigungen“ ein, um Glukosewarnungen zu erhalten.</translation>
    </message>
    <message>
        <source>&amp;Open notification settings</source>
        <translation>Benachrichti&amp;gungseinstellungen öffnen</translation>
    </message>
    <message>
        <source>Alerts</source>
        <translation>Warnungen</translation>
    </message>
    <message>
        <source>Show &amp;alerts</source>
        <translation>&amp;Warnungen anzeigen</translation>
    </message>
    <message>
        <source>&amp;Low glucose</source>
        <translation>&amp;Niedrige Glukose</translation>
    </message>
    <message>
        <source>&amp;High glucose</source>
        <translation>&amp;Hohe Glukose</translation>
    </message>
    <message>
        <source>Rapid &amp;fall</source>
        <translation>Schneller &amp;Abfall</translation>
    </message>
    <message>
        <source>Rapid &amp;rise</source>
        <translation>Schneller Ansti&amp;eg</translation>
    </message>
    <message>
        <source>&amp;No data for 15 minutes</source>
        <translation>&amp;Keine Daten seit 15 Minuten</translation>
    </message>
    <message>
        <source>Repeat a low alert while the low lasts</source>
        <translation>Warnung wiederholen, solange der Wert niedrig ist</translation>
    </message>
    <message>
        <source>R&amp;epeat while a low lasts:</source>
        <translation>Wie&amp;derholen, solange niedrig:</translation>
    </message>
    <message>
        <source>Send &amp;test alert</source>
        <translation>&amp;Testwarnung senden</translation>
    </message>
    <message>
        <source>Quiet hours</source>
        <translation>Ruhezeit</translation>
    </message>
    <message>
        <source>&amp;Quiet hours: no alerts at these times</source>
        <translation>&amp;Ruhezeit: keine Warnungen zu diesen Zeiten</translation>
    </message>
    <message>
        <source>Fro&amp;m:</source>
        <translation>&amp;Von:</translation>
    </message>
    <message>
        <source>Quiet hours begin</source>
        <translation>Beginn der Ruhezeit</translation>
    </message>
    <message>
        <source>Unt&amp;il:</source>
        <translation>&amp;Bis:</translation>
    </message>
    <message>
        <source>Quiet hours end</source>
        <translation>Ende der Ruhezeit</translation>
    </message>
    <message>
        <source>&amp;Snooze low alerts</source>
        <translation>Auch Warnungen bei n&amp;iedrigen Werten</translation>
    </message>
    <message>
        <source>Snoo&amp;ze high alerts</source>
        <translation>Au&amp;ch Warnungen bei hohen Werten</translation>
    </message>
    <message>
        <source>Snooze rapi&amp;d-change alerts</source>
        <translation>Auch Warnungen bei &amp;schneller Änderung</translation>
    </message>
    <message>
        <source>Status bar snooze actions only silence the alert categories selected above.</source>
        <translation>Das Stummschalten im Menü betrifft nur die oben gewählten Arten von Warnungen.</translation>
    </message>
    <message>
        <source>They last past midnight.</source>
        <translation>Sie dauert über Mitternacht hinaus.</translation>
    </message>
    <message>
        <source>Notifications are disabled for Tidewell.</source>
        <translation>Benachrichtigungen sind für Tidewell ausgeschaltet.</translation>
    </message>
    <message>
        <source>“%1” is stored and in force. The list shows the nearest value; picking one replaces it.</source>
        <translation>„%1“ ist gespeichert und gilt. Die Liste zeigt den nächstliegenden Wert; eine Auswahl ersetzt ihn.</translation>
    </message>
    <message>
        <source>Sending test alert</source>
        <translation>Testwarnung wird gesendet</translation>
    </message>
    <message>
        <source>Both times are the same: quiet hours last all day.</source>
        <translation>Beide Zeiten sind gleich: Die Ruhezeit dauert den ganzen Tag.</translation>
    </message>
    <message>
        <source>Let lo&amp;w alerts through</source>
        <translation>Bei niedrigen Werten tr&amp;otzdem warnen</translation>
    </message>
    <message>
        <source>What a snooze from the menu silences</source>
        <translation>Was eine Stummschaltung im Menü betrifft</translation>
    </message>
</context>
<context>
    <name>tidewell::SettingsGeneralPage</name>
    <message>
        <source>1 hour</source>
        <translation>1 Stunde</translation>
    </message>
    <message>
        <source>%1 hours</source>
        <translation>%1 Stunden</translation>
    </message>
    <message>
        <source>This is the demonstration, with somebody else&apos;s readings. What is changed here is forgotten when it ends.</source>
        <translation>Dies ist die Vorführung mit den Messwerten eines anderen Menschen. Was hier geändert wird, ist vergessen, wenn sie endet.</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Start</translation>
    </message>
    <message>
        <source>Start Tidewell when I &amp;log in</source>
        <translation>Tidewell beim &amp;Anmelden am Computer starten</translation>
    </message>
    <message>
        <source>Graph</source>
        <translation>Kurve</translation>
    </message>
    <message>
        <source>Time that the graph shows</source>
        <translation>Zeit, die die Kurve zeigt</translation>
    </message>
    <message>
        <source>&amp;Time shown:</source>
        <translation>&amp;Gezeigte Zeit:</translation>
    </message>
    <message>
        <source>Language</source>
        <translation>Sprache</translation>
    </message>
    <message>
        <source>Tidewell speaks the language of your desktop where it knows it, and English otherwise.</source>
        <translation>Tidewell spricht die Sprache Ihres Desktops, wenn es sie kennt, und sonst Englisch.</translation>
    </message>
    <message>
        <source>What is stored where</source>
        <translation>Was wo gespeichert ist</translation>
    </message>
    <message>
        <source>Everything stays on this computer.</source>
        <translation>Alles bleibt auf diesem Computer.</translation>
    </message>
    <message>
        <source>Account and settings, without the password:</source>
        <translation>Konto und Einstellungen, ohne das Passwort:</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>Copy the path of the settings</source>
        <translation>Pfad der Einstellungen kopieren</translation>
    </message>
    <message>
        <source>Saved readings, encrypted:</source>
        <translation>Gespeicherte Messwerte, verschlüsselt:</translation>
    </message>
    <message>
        <source>C&amp;opy</source>
        <translation>K&amp;opieren</translation>
    </message>
    <message>
        <source>Copy the path of the saved readings</source>
        <translation>Pfad der gespeicherten Messwerte kopieren</translation>
    </message>
    <message>
        <source>What the program keeps in mind, such as a snooze:</source>
        <translation>Was das Programm sich merkt, etwa eine Stummschaltung:</translation>
    </message>
    <message>
        <source>Co&amp;py</source>
        <translation>Ko&amp;pieren</translation>
    </message>
    <message>
        <source>Copy the path of the program&apos;s notes</source>
        <translation>Pfad der Notizen des Programms kopieren</translation>
    </message>
    <message>
        <source>Password, and the key of the saved readings:</source>
        <translation>Passwort und Schlüssel der gespeicherten Messwerte:</translation>
    </message>
    <message>
        <source>Default (%1)</source>
        <translation>Vorgabe (%1)</translation>
    </message>
    <message>
        <source>%1 is stored, which the graph cannot show; the default is in force.</source>
        <translation>Gespeichert ist %1, was die Kurve nicht zeigen kann; es gilt die Vorgabe.</translation>
    </message>
    <message>
        <source>Nowhere: this is a demonstration.</source>
        <translation>Nirgends: Dies ist eine Vorführung.</translation>
    </message>
    <message>
        <source>Your keyring</source>
        <translation>Ihr Schlüsselbund</translation>
    </message>
    <message>
        <source>The file %1. Whoever can read your files can read them too.</source>
        <translation>Die Datei %1. Wer Ihre Dateien lesen kann, kann beides auch lesen.</translation>
    </message>
    <message>
        <source>Not in the demonstration.</source>
        <translation>Nicht in der Vorführung.</translation>
    </message>
</context>
<context>
    <name>tidewell::SettingsGlucosePage</name>
    <message>
        <source>Display</source>
        <translation>Anzeige</translation>
    </message>
    <message>
        <source>Unit</source>
        <translation>Einheit</translation>
    </message>
    <message>
        <source>&amp;Unit:</source>
        <translation>&amp;Einheit:</translation>
    </message>
    <message>
        <source>Low and high</source>
        <translation>Niedrig und hoch</translation>
    </message>
    <message>
        <source>&amp;Low at or below:</source>
        <translation>&amp;Niedrig bis:</translation>
    </message>
    <message>
        <source>Low threshold</source>
        <translation>Unterer Grenzwert</translation>
    </message>
    <message>
        <source>&amp;High at or above:</source>
        <translation>&amp;Hoch ab:</translation>
    </message>
    <message>
        <source>High threshold</source>
        <translation>Oberer Grenzwert</translation>
    </message>
    <message>
        <source>The reading and the graph change colour at these values, and low and high alerts are due at them. Both are stored in mg/dL, whichever unit is shown.</source>
        <translation>Messwert und Kurve ändern bei diesen Werten die Farbe, und Warnungen bei niedrigen und hohen Werten richten sich danach. Beide sind in mg/dL gespeichert, gleich welche Einheit angezeigt wird.</translation>
    </message>
    <message>
        <source>Insights does not use them: its ranges are fixed, so that reports can be compared.</source>
        <translation>Die Auswertung verwendet sie nicht: Ihre Bereiche stehen fest, damit Berichte vergleichbar sind.</translation>
    </message>
    <message>
        <source>%1 mg/dL is stored and in force. The list shows the nearest value, %2; picking one replaces it.</source>
        <translation>%1 mg/dL ist gespeichert und gilt. Die Liste zeigt den nächstliegenden Wert, %2; eine Auswahl ersetzt ihn.</translation>
    </message>
</context>
<context>
    <name>tidewell::SettingsHistoryDialog</name>
    <message>
        <source>Save readings</source>
        <translation>Messwerte speichern</translation>
    </message>
    <message>
        <source>Save readings on this computer?</source>
        <translation>Messwerte auf diesem Computer speichern?</translation>
    </message>
    <message>
        <source>What: each glucose reading that Tidewell fetches from now on for this account and person, with its value, trend and time. Nothing from before.</source>
        <translation>Was: jeder Glukosewert, den Tidewell ab jetzt für dieses Konto und diese Person abruft, mit Wert, Trend und Zeit. Nichts von vorher.</translation>
    </message>
    <message>
        <source>Where: on this computer only, encrypted. Nothing is ever uploaded.</source>
        <translation>Wo: nur auf diesem Computer, verschlüsselt. Es wird nie etwas hochgeladen.</translation>
    </message>
    <message>
        <source>To stop: “Pause saving” on this page. What is saved stays until it is too old.</source>
        <translation>Beenden: „Speichern anhalten“ auf dieser Seite. Was gespeichert ist, bleibt, bis es zu alt ist.</translation>
    </message>
    <message>
        <source>To delete: “Delete saved readings…” on this page. It removes the readings, and their key last.</source>
        <translation>Löschen: „Gespeicherte Messwerte löschen…“ auf dieser Seite. Dabei werden die Messwerte entfernt und zuletzt ihr Schlüssel.</translation>
    </message>
    <message>
        <source>How long readings are kept</source>
        <translation>Wie lange Messwerte aufbewahrt werden</translation>
    </message>
    <message>
        <source>%1 days</source>
        <translation>%1 Tage</translation>
    </message>
    <message>
        <source>&amp;Keep readings for:</source>
        <translation>Messwerte &amp;aufbewahren:</translation>
    </message>
    <message>
        <source>Readings that are older will be removed.</source>
        <translation>Ältere Messwerte werden entfernt.</translation>
    </message>
    <message>
        <source>Until now it was longer: saved readings that are older will be deleted at once.</source>
        <translation>Bisher war es länger: Ältere gespeicherte Messwerte werden sofort gelöscht.</translation>
    </message>
    <message>
        <source>&amp;Save readings</source>
        <translation>Messwerte &amp;speichern</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>The key to them is kept nowhere: this is a demonstration.</source>
        <translation>Der Schlüssel dazu liegt nirgends: Dies ist eine Vorführung.</translation>
    </message>
    <message>
        <source>The key to them is kept in your keyring.</source>
        <translation>Der Schlüssel dazu liegt in Ihrem Schlüsselbund.</translation>
    </message>
    <message>
        <source>The key to them is kept in the file %1. Whoever can read your files can read it too.</source>
        <translation>Der Schlüssel dazu liegt in der Datei %1. Wer Ihre Dateien lesen kann, kann ihn auch lesen.</translation>
    </message>
</context>
<context>
    <name>tidewell::SettingsInsightsPage</name>
    <message>
        <source>%1 days</source>
        <translation>%1 Tage</translation>
    </message>
    <message>
        <source>Saved readings</source>
        <translation>Gespeicherte Messwerte</translation>
    </message>
    <message>
        <source>Insights reports on readings that are saved on this computer, encrypted. Nothing is saved unless you ask for it.</source>
        <translation>Die Auswertung beruht auf Messwerten, die verschlüsselt auf diesem Computer gespeichert sind. Nichts wird gespeichert, wenn Sie es nicht wünschen.</translation>
    </message>
    <message>
        <source>&amp;Pause saving</source>
        <translation>Speichern an&amp;halten</translation>
    </message>
    <message>
        <source>Insights</source>
        <translation>Auswertung</translation>
    </message>
    <message>
        <source>How long readings are kept</source>
        <translation>Wie lange Messwerte aufbewahrt werden</translation>
    </message>
    <message>
        <source>&amp;Keep readings for:</source>
        <translation>Messwerte &amp;aufbewahren:</translation>
    </message>
    <message>
        <source>Show &amp;Insights</source>
        <translation>Auswertung an&amp;zeigen</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Deleting removes the readings and then their key; nobody can bring them back. Saving is off afterwards.</source>
        <translation>Beim Löschen werden die Messwerte und dann ihr Schlüssel entfernt; niemand kann sie zurückholen. Danach ist das Speichern ausgeschaltet.</translation>
    </message>
    <message>
        <source>&amp;Delete saved readings…</source>
        <translation>Gespeicherte Messwerte &amp;löschen…</translation>
    </message>
    <message>
        <source>Delete the readings of &amp;every account…</source>
        <translation>Messwerte aller &amp;Konten löschen…</translation>
    </message>
    <message>
        <source>Keep readings for %1?</source>
        <translation>Messwerte %1 aufbewahren?</translation>
    </message>
    <message>
        <source>Delete all saved readings that are older than %1?</source>
        <translation>Alle gespeicherten Messwerte löschen, die älter sind als %1?</translation>
    </message>
    <message>
        <source>They go at once, for this account and person, and cannot be brought back. Reports can then cover no more than %1.</source>
        <translation>Sie gehen sofort verloren, für dieses Konto und diese Person, und lassen sich nicht zurückholen. Berichte können dann höchstens %1 umfassen.</translation>
    </message>
    <message>
        <source>&amp;Delete older readings</source>
        <translation>Ältere Messwerte &amp;löschen</translation>
    </message>
    <message>
        <source>Delete saved readings</source>
        <translation>Gespeicherte Messwerte löschen</translation>
    </message>
    <message>
        <source>Delete the saved readings of every account and person, with their keys?</source>
        <translation>Die gespeicherten Messwerte aller Konten und Personen mit ihren Schlüsseln löschen?</translation>
    </message>
    <message>
        <source>Delete all saved readings of this account and person, with their key?</source>
        <translation>Alle gespeicherten Messwerte dieses Kontos und dieser Person mit ihrem Schlüssel löschen?</translation>
    </message>
    <message>
        <source>They cannot be brought back. Saving is off afterwards, and Insights begins anew. The readings on screen and at the glucose service stay.</source>
        <translation>Sie lassen sich nicht zurückholen. Danach ist das Speichern ausgeschaltet, und die Auswertung beginnt von vorn. Die Messwerte auf dem Bildschirm und beim Glukosedienst bleiben.</translation>
    </message>
    <message>
        <source>&amp;Delete everything saved</source>
        <translation>Alles Gespeicherte &amp;löschen</translation>
    </message>
    <message>
        <source>&amp;Delete saved readings</source>
        <translation>Gespeicherte Messwerte &amp;löschen</translation>
    </message>
    <message>
        <source>Saving is on.</source>
        <translation>Das Speichern ist eingeschaltet.</translation>
    </message>
    <message>
        <source>Saving is off, and what was saved is being deleted.</source>
        <translation>Das Speichern ist ausgeschaltet, und das Gespeicherte wird gelöscht.</translation>
    </message>
    <message>
        <source>Saving is off. Nothing is saved.</source>
        <translation>Das Speichern ist ausgeschaltet. Nichts ist gespeichert.</translation>
    </message>
    <message>
        <source>The report has been available since %1.</source>
        <translation>Der Bericht ist seit dem %1 verfügbar.</translation>
    </message>
    <message>
        <source>The first readings were saved on %1.</source>
        <translation>Die ersten Messwerte wurden am %1 gespeichert.</translation>
    </message>
    <message>
        <source>The first readings were saved on %1; saving was last switched on on %2.</source>
        <translation>Die ersten Messwerte wurden am %1 gespeichert; zuletzt eingeschaltet wurde das Speichern am %2.</translation>
    </message>
    <message>
        <source>&amp;Read what saving means…</source>
        <translation>Le&amp;sen, was Speichern bedeutet…</translation>
    </message>
    <message>
        <source>&amp;Resume saving…</source>
        <translation>&amp;Speichern fortsetzen…</translation>
    </message>
    <message>
        <source>&amp;Save readings…</source>
        <translation>Messwerte &amp;speichern…</translation>
    </message>
    <message>
        <source>Please wait: saved readings are being changed.</source>
        <translation>Bitte warten: Gespeicherte Messwerte werden geändert.</translation>
    </message>
    <message>
        <source>No reading has been saved yet. Saving was switched on on %1.</source>
        <translation>Es wurde noch kein Messwert gespeichert. Das Speichern wurde am %1 eingeschaltet.</translation>
    </message>
    <message>
        <source>No readings are saved.</source>
        <translation>Es sind keine Messwerte gespeichert.</translation>
    </message>
</context>
<context>
    <name>tidewell::SettingsWindow</name>
    <message>
        <source>Could not save the change. %1 The settings are shown as they are stored.</source>
        <translation>Die Änderung konnte nicht gespeichert werden. %1 Angezeigt werden die Einstellungen, wie sie gespeichert sind.</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>General</source>
        <translation>Allgemein</translation>
    </message>
    <message>
        <source>Glucose</source>
        <translation>Glukose</translation>
    </message>
    <message>
        <source>Insights</source>
        <translation>Auswertung</translation>
    </message>
    <message>
        <source>Alerts</source>
        <translation>Warnungen</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>Konto</translation>
    </message>
    <message>
        <source>About</source>
        <translation>Über Tidewell</translation>
    </message>
    <message>
        <source>Nothing that you set keeps lows silent any more.</source>
        <translation>Keine Ihrer Einstellungen hält Warnungen bei niedrigen Werten mehr zurück.</translation>
    </message>
</context>
<context>
    <name>tidewell::SignInDialog</name>
    <message>
        <source>Saving the choice…</source>
        <translation>Die Auswahl wird gespeichert…</translation>
    </message>
    <message>
        <source>Checking the account…</source>
        <translation>Das Konto wird geprüft…</translation>
    </message>
    <message>
        <source>Checking the account</source>
        <translation>Das Konto wird geprüft</translation>
    </message>
    <message>
        <source>&amp;Sign in</source>
        <translation>&amp;Anmelden</translation>
    </message>
    <message>
        <source>&amp;Follow</source>
        <translation>&amp;Folgen</translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation>&amp;Zurück</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>Abbre&amp;chen</translation>
    </message>
    <message>
        <source>Sign in to your glucose service</source>
        <translation>Beim Glukosedienst anmelden</translation>
    </message>
</context>
<context>
    <name>tidewell::TermsDialog</name>
    <message>
        <source>Please read the terms of use. Until you accept them, Tidewell asks for no readings.</source>
        <translation>Bitte lesen Sie die Nutzungsbedingungen. Bis Sie sie annehmen, fragt Tidewell keine Messwerte ab.</translation>
    </message>
    <message>
        <source>The terms of use have changed. Please read them. Tidewell goes on meanwhile.</source>
        <translation>Die Nutzungsbedingungen haben sich geändert. Bitte lesen Sie sie. Tidewell läuft inzwischen weiter.</translation>
    </message>
    <message>
        <source>Tidewell does not know whether you accepted these terms. Please accept them once more.</source>
        <translation>Tidewell weiß nicht, ob Sie diese Nutzungsbedingungen angenommen haben. Bitte nehmen Sie sie noch einmal an.</translation>
    </message>
    <message>
        <source>Terms of use</source>
        <translation>Nutzungsbedingungen</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Schließen</translation>
    </message>
    <message>
        <source>&amp;Accept</source>
        <translation>&amp;Annehmen</translation>
    </message>
    <message>
        <source>&amp;Not now</source>
        <translation>&amp;Nicht jetzt</translation>
    </message>
</context>
<context>
    <name>tidewell::TermsView</name>
    <message>
        <source>Terms of use</source>
        <translation>Nutzungsbedingungen</translation>
    </message>
    <message>
        <source>Version %1</source>
        <translation>Version %1</translation>
    </message>
</context>
</TS>
