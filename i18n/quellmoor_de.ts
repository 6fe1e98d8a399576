<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>AlertPanel</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>Alerts</name>
    <message>
        <source>Diagnostics Copied</source>
        <translation>Diagnosedaten kopiert</translation>
    </message>
    <message>
        <source>They are on the clipboard. Paste them into your message to support.</source>
        <translation>Sie liegen in der Zwischenablage. Füge sie in deine Nachricht an den Support ein.</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Use Touch ID to login to </source>
        <translation>Nutze Touch ID zur Anmeldung bei </translation>
    </message>
    <message>
        <source>Login to %1</source>
        <translation>Bei %1 anmelden</translation>
    </message>
    <message>
        <source>Enable Touch ID</source>
        <translation>Touch ID aktivieren</translation>
    </message>
    <message>
        <source>Enable</source>
        <translation>Aktivieren</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Touch ID Has Been Reset</source>
        <translation>Touch ID wurde zurückgesetzt</translation>
    </message>
    <message>
        <source>To setup Touch ID again login to your account with the correct username and password and select Enable.</source>
        <translation>Um Touch ID wieder einzurichten, melde dich mit dem richtigen Benutzernamen und Passwort bei deinem Konto an und wähle „Aktivieren“.</translation>
    </message>
    <message>
        <source>Two-step Authentication</source>
        <translation>Anmeldung in zwei Schritten</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>Bestätigen</translation>
    </message>
    <message>
        <source>Ok</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Touch ID is not yet enabled</source>
        <translation>Touch ID ist noch nicht aktiviert</translation>
    </message>
    <message>
        <source>To enable Touch ID, please login to your account and press play.</source>
        <translation>Um Touch ID zu aktivieren, melde dich bei deinem Konto an und drücke „Spielen“.</translation>
    </message>
    <message>
        <source>Touch ID is not available</source>
        <translation>Touch ID ist nicht verfügbar</translation>
    </message>
    <message>
        <source>Touch ID is not available on this device.</source>
        <translation>Touch ID ist auf diesem Gerät nicht verfügbar.</translation>
    </message>
    <message>
        <source>Launcher Update Required</source>
        <translation>Launcher-Update erforderlich</translation>
    </message>
    <message>
        <source>Update</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>Exit Launcher</source>
        <translation>Launcher beenden</translation>
    </message>
    <message>
        <source>There is a required update available for the launcher.</source>
        <translation>Für den Launcher ist ein notwendiges Update verfügbar.</translation>
    </message>
</context>
<context>
    <name>CustomTouchBar</name>
    <message>
        <source>PLAY</source>
        <translation>SPIELEN</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Spielen</translation>
    </message>
    <message>
        <source>Fingerprint</source>
        <translation>Fingerabdruck</translation>
    </message>
    <message>
        <source>Log in with your fingerprint</source>
        <translation>Mit deinem Fingerabdruck anmelden</translation>
    </message>
    <message>
        <source>Notes</source>
        <translation>Neuerungen</translation>
    </message>
    <message>
        <source>Release notes</source>
        <translation>Versionshinweise</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>Konto</translation>
    </message>
    <message>
        <source>Manage account</source>
        <translation>Konto verwalten</translation>
    </message>
    <message>
        <source>Guide</source>
        <translation>Handbuch</translation>
    </message>
    <message>
        <source>Player’s guide</source>
        <translation>Spielerhandbuch</translation>
    </message>
    <message>
        <source>Community</source>
        <translation>Community</translation>
    </message>
    <message>
        <source>Community forum</source>
        <translation>Community-Forum</translation>
    </message>
</context>
<context>
    <name>Fingerprint</name>
    <message>
        <source>The swipe was too short. Try again.</source>
        <translation>Das war zu kurz. Streiche noch einmal über den Sensor.</translation>
    </message>
    <message>
        <source>Put your finger on the middle of the reader.</source>
        <translation>Lege den Finger mitten auf den Sensor.</translation>
    </message>
    <message>
        <source>Lift your finger and try again.</source>
        <translation>Hebe den Finger an und versuche es noch einmal.</translation>
    </message>
    <message>
        <source>Try your finger again.</source>
        <translation>Versuche es noch einmal mit dem Finger.</translation>
    </message>
</context>
<context>
    <name>FingerprintPanel</name>
    <message>
        <source>Put your finger on the reader.</source>
        <translation>Lege den Finger auf den Sensor.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>Launcher</name>
    <message>
        <source>News</source>
        <translation>Neuigkeiten</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>Konto</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>PLAY</source>
        <translation>SPIELEN</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Spielen</translation>
    </message>
    <message>
        <source>Forgot password?</source>
        <translation>Passwort vergessen?</translation>
    </message>
    <message>
        <source>Create an account</source>
        <translation>Konto erstellen</translation>
    </message>
    <message>
        <source>Home</source>
        <translation>Startseite</translation>
    </message>
    <message>
        <source>Home page</source>
        <translation>Startseite</translation>
    </message>
    <message>
        <source>Support</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Community</source>
        <translation>Community</translation>
    </message>
    <message>
        <source>Community forum</source>
        <translation>Community-Forum</translation>
    </message>
    <message>
        <source>Manage account</source>
        <translation>Konto verwalten</translation>
    </message>
    <message>
        <source>Guide</source>
        <translation>Handbuch</translation>
    </message>
    <message>
        <source>Player’s guide</source>
        <translation>Spielerhandbuch</translation>
    </message>
    <message>
        <source>Notes</source>
        <translation>Neuerungen</translation>
    </message>
    <message>
        <source>Release notes</source>
        <translation>Versionshinweise</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>Minimise</source>
        <translation>Minimieren</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>LauncherMenu</name>
    <message>
        <source>Launcher</source>
        <translation>Launcher</translation>
    </message>
    <message>
        <source>&amp;Minimise</source>
        <translation>&amp;Minimieren</translation>
    </message>
    <message>
        <source>&amp;Reset fingerprint login</source>
        <translation>&amp;Fingerabdruck-Anmeldung zurücksetzen</translation>
    </message>
    <message>
        <source>&amp;Copy diagnostics</source>
        <translation>&amp;Diagnosedaten kopieren</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>Open the menu</source>
        <translation>Menü öffnen</translation>
    </message>
</context>
<context>
    <name>LauncherView</name>
    <message>
        <source>Not available at present</source>
        <translation>Zurzeit nicht verfügbar</translation>
    </message>
</context>
<context>
    <name>NewsView</name>
    <message>
        <source>News</source>
        <translation>Neuigkeiten</translation>
    </message>
</context>
</TS>
