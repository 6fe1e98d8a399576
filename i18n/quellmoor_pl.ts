<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="pl" sourcelanguage="en">
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
        <translation>Skopiowano dane diagnostyczne</translation>
    </message>
    <message>
        <source>They are on the clipboard. Paste them into your message to support.</source>
        <translation>Są w schowku. Wklej je do wiadomości do pomocy technicznej.</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Zamknij</translation>
    </message>
    <message>
        <source>Use Touch ID to login to </source>
        <translation>Użyj Touch ID, aby zalogować się do gry </translation>
    </message>
    <message>
        <source>Login to %1</source>
        <translation>Logowanie do gry %1</translation>
    </message>
    <message>
        <source>Enable Touch ID</source>
        <translation>Włącz Touch ID</translation>
    </message>
    <message>
        <source>Enable</source>
        <translation>Włącz</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Anuluj</translation>
    </message>
    <message>
        <source>Touch ID Has Been Reset</source>
        <translation>Zresetowano Touch ID</translation>
    </message>
    <message>
        <source>To setup Touch ID again login to your account with the correct username and password and select Enable.</source>
        <translation>Aby ponownie skonfigurować Touch ID, zaloguj się na swoje konto, podając poprawną nazwę użytkownika i hasło, a następnie wybierz „Włącz”.</translation>
    </message>
    <message>
        <source>Two-step Authentication</source>
        <translation>Uwierzytelnianie dwuetapowe</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>Potwierdź</translation>
    </message>
    <message>
        <source>Ok</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Touch ID is not yet enabled</source>
        <translation>Funkcja Touch ID nie jest jeszcze włączona</translation>
    </message>
    <message>
        <source>To enable Touch ID, please login to your account and press play.</source>
        <translation>Aby włączyć Touch ID, zaloguj się na swoje konto i naciśnij „Graj”.</translation>
    </message>
    <message>
        <source>Touch ID is not available</source>
        <translation>Funkcja Touch ID jest niedostępna</translation>
    </message>
    <message>
        <source>Touch ID is not available on this device.</source>
        <translation>Funkcja Touch ID jest niedostępna na tym urządzeniu.</translation>
    </message>
    <message>
        <source>Launcher Update Required</source>
        <translation>Wymagana aktualizacja launchera</translation>
    </message>
    <message>
        <source>Update</source>
        <translation>Zaktualizuj</translation>
    </message>
    <message>
        <source>Exit Launcher</source>
        <translation>Zamknij launcher</translation>
    </message>
    <message>
        <source>There is a required update available for the launcher.</source>
        <translation>Dostępna jest obowiązkowa aktualizacja launchera.</translation>
    </message>
</context>
<context>
    <name>CustomTouchBar</name>
    <message>
        <source>PLAY</source>
        <translation>GRAJ</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Graj</translation>
    </message>
    <message>
        <source>Fingerprint</source>
        <translation>Odcisk palca</translation>
    </message>
    <message>
        <source>Log in with your fingerprint</source>
        <translation>Zaloguj się odciskiem palca</translation>
    </message>
    <message>
        <source>Notes</source>
        <translation>Nowości</translation>
    </message>
    <message>
        <source>Release notes</source>
        <translation>Informacje o wersji</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>Konto</translation>
    </message>
    <message>
        <source>Manage account</source>
        <translation>Zarządzaj kontem</translation>
    </message>
    <message>
        <source>Guide</source>
        <translation>Poradnik</translation>
    </message>
    <message>
        <source>Player’s guide</source>
        <translation>Poradnik gracza</translation>
    </message>
    <message>
        <source>Community</source>
        <translation>Społeczność</translation>
    </message>
    <message>
        <source>Community forum</source>
        <translation>Forum społeczności</translation>
    </message>
</context>
<context>
    <name>Fingerprint</name>
    <message>
        <source>The swipe was too short. Try again.</source>
        <translation>Ruch palca był zbyt krótki. Spróbuj ponownie.</translation>
    </message>
    <message>
        <source>Put your finger on the middle of the reader.</source>
        <translation>Przyłóż palec do środka czytnika.</translation>
    </message>
    <message>
        <source>Lift your finger and try again.</source>
        <translation>Podnieś palec i spróbuj ponownie.</translation>
    </message>
    <message>
        <source>Try your finger again.</source>
        <translation>Przyłóż palec jeszcze raz.</translation>
    </message>
</context>
<context>
    <name>FingerprintPanel</name>
    <message>
        <source>Put your finger on the reader.</source>
        <translation>Przyłóż palec do czytnika.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Anuluj</translation>
    </message>
</context>
<context>
    <name>Launcher</name>
    <message>
        <source>News</source>
        <translation>Aktualności</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>Konto</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Hasło</translation>
    </message>
    <message>
        <source>PLAY</source>
        <translation>GRAJ</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Graj</translation>
    </message>
    <message>
        <source>Forgot password?</source>
        <translation>Nie pamiętasz hasła?</translation>
    </message>
    <message>
        <source>Create an account</source>
        <translation>Utwórz konto</translation>
    </message>
    <message>
        <source>Home</source>
        <translation>Strona gry</translation>
    </message>
    <message>
        <source>Home page</source>
        <translation>Strona główna</translation>
    </message>
    <message>
        <source>Support</source>
        <translation>Pomoc</translation>
    </message>
    <message>
        <source>Community</source>
        <translation>Społeczność</translation>
    </message>
    <message>
        <source>Community forum</source>
        <translation>Forum społeczności</translation>
    </message>
    <message>
        <source>Manage account</source>
        <translation>Zarządzaj kontem</translation>
    </message>
    <message>
        <source>Guide</source>
        <translation>Poradnik</translation>
    </message>
    <message>
        <source>Player’s guide</source>
        <translation>Poradnik gracza</translation>
    </message>
    <message>
        <source>Notes</source>
        <translation>Nowości</translation>
    </message>
    <message>
        <source>Release notes</source>
        <translation>Informacje o wersji</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Postęp</translation>
    </message>
    <message>
        <source>Minimise</source>
        <translation>Minimalizuj</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Zamknij</translation>
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
        <translation>&amp;Minimalizuj</translation>
    </message>
    <message>
        <source>&amp;Reset fingerprint login</source>
        <translation>Zresetuj logowanie &amp;odciskiem palca</translation>
    </message>
    <message>
        <source>&amp;Copy diagnostics</source>
        <translation>&amp;Kopiuj dane diagnostyczne</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Zakończ</translation>
    </message>
    <message>
        <source>Open the menu</source>
        <translation>Otwórz menu</translation>
    </message>
</context>
<context>
    <name>LauncherView</name>
    <message>
        <source>Not available at present</source>
        <translation>Obecnie niedostępne</translation>
    </message>
</context>
<context>
    <name>NewsView</name>
    <message>
        <source>News</source>
        <translation>Aktualności</translation>
    </message>
</context>
</TS>
