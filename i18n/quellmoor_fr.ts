<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
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
        <translation>Diagnostic copié</translation>
    </message>
    <message>
        <source>They are on the clipboard. Paste them into your message to support.</source>
        <translation>Il se trouve dans le presse-papiers. Collez-le dans votre message à l’assistance.</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Fermer</translation>
    </message>
    <message>
        <source>Use Touch ID to login to </source>
        <translation>Utilisez Touch ID pour vous connecter à </translation>
    </message>
    <message>
        <source>Login to %1</source>
        <translation>Connexion à %1</translation>
    </message>
    <message>
        <source>Enable Touch ID</source>
        <translation>Activer Touch ID</translation>
    </message>
    <message>
        <source>Enable</source>
        <translation>Activer</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Touch ID Has Been Reset</source>
        <translation>Touch ID a été réinitialisé</translation>
    </message>
    <message>
        <source>To setup Touch ID again login to your account with the correct username and password and select Enable.</source>
        <translation>Pour configurer de nouveau Touch ID, connectez-vous à votre compte avec le nom d’utilisateur et le mot de passe corrects, puis choisissez «&#xa0;Activer&#xa0;».</translation>
    </message>
    <message>
        <source>Two-step Authentication</source>
        <translation>Authentification en deux étapes</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>Confirmer</translation>
    </message>
    <message>
        <source>Ok</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Touch ID is not yet enabled</source>
        <translation>Touch ID n’est pas encore activé</translation>
    </message>
    <message>
        <source>To enable Touch ID, please login to your account and press play.</source>
        <translation>Pour activer Touch ID, connectez-vous à votre compte et appuyez sur «&#xa0;Jouer&#xa0;».</translation>
    </message>
    <message>
        <source>Touch ID is not available</source>
        <translation>Touch ID n’est pas disponible</translation>
    </message>
    <message>
        <source>Touch ID is not available on this device.</source>
        <translation>Touch ID n’est pas disponible sur cet appareil.</translation>
    </message>
    <message>
        <source>Launcher Update Required</source>
        <translation>Mise à jour du lanceur requise</translation>
    </message>
    <message>
        <source>Update</source>
        <translation>Mettre à jour</translation>
    </message>
    <message>
        <source>Exit Launcher</source>
        <translation>Quitter le lanceur</translation>
    </message>
    <message>
        <source>There is a required update available for the launcher.</source>
        <translation>Une mise à jour obligatoire du lanceur est disponible.</translation>
    </message>
</context>
<context>
    <name>CustomTouchBar</name>
    <message>
        <source>PLAY</source>
        <translation>JOUER</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Jouer</translation>
    </message>
    <message>
        <source>Fingerprint</source>
        <translation>Empreinte digitale</translation>
    </message>
    <message>
        <source>Log in with your fingerprint</source>
        <translation>Se connecter avec votre empreinte digitale</translation>
    </message>
    <message>
        <source>Notes</source>
        <translation>Nouveautés</translation>
    </message>
    <message>
        <source>Release notes</source>
        <translation>Notes de version</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>Compte</translation>
    </message>
    <message>
        <source>Manage account</source>
        <translation>Gérer le compte</translation>
    </message>
    <message>
        <source>Guide</source>
        <translation>Guide</translation>
    </message>
    <message>
        <source>Player’s guide</source>
        <translation>Guide du joueur</translation>
    </message>
    <message>
        <source>Community</source>
        <translation>Communauté</translation>
    </message>
    <message>
        <source>Community forum</source>
        <translation>Forum de la communauté</translation>
    </message>
</context>
<context>
    <name>Fingerprint</name>
    <message>
        <source>The swipe was too short. Try again.</source>
        <translation>Le mouvement était trop court. Réessayez.</translation>
    </message>
    <message>
        <source>Put your finger on the middle of the reader.</source>
        <translation>Placez le doigt au centre du lecteur.</translation>
    </message>
    <message>
        <source>Lift your finger and try again.</source>
        <translation>Levez le doigt et réessayez.</translation>
    </message>
    <message>
        <source>Try your finger again.</source>
        <translation>Présentez de nouveau le doigt.</translation>
    </message>
</context>
<context>
    <name>FingerprintPanel</name>
    <message>
        <source>Put your finger on the reader.</source>
        <translation>Placez le doigt sur le lecteur.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
</context>
<context>
    <name>Launcher</name>
    <message>
        <source>News</source>
        <translation>Actualités</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>Compte</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Mot de passe</translation>
    </message>
    <message>
        <source>PLAY</source>
        <translation>JOUER</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Jouer</translation>
    </message>
    <message>
        <source>Forgot password?</source>
        <translation>Mot de passe oublié&#xa0;?</translation>
    </message>
    <message>
        <source>Create an account</source>
        <translation>Créer un compte</translation>
    </message>
    <message>
        <source>Home</source>
        <translation>Accueil</translation>
    </message>
    <message>
        <source>Home page</source>
        <translation>Page d’accueil</translation>
    </message>
    <message>
        <source>Support</source>
        <translation>Assistance</translation>
    </message>
    <message>
        <source>Community</source>
        <translation>Communauté</translation>
    </message>
    <message>
        <source>Community forum</source>
        <translation>Forum de la communauté</translation>
    </message>
    <message>
        <source>Manage account</source>
        <translation>Gérer le compte</translation>
    </message>
    <message>
        <source>Guide</source>
        <translation>Guide</translation>
    </message>
    <message>
        <source>Player’s guide</source>
        <translation>Guide du joueur</translation>
    </message>
    <message>
        <source>Notes</source>
        <translation>Nouveautés</translation>
    </message>
    <message>
        <source>Release notes</source>
        <translation>Notes de version</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Progression</translation>
    </message>
    <message>
        <source>Minimise</source>
        <translation>Réduire</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Fermer</translation>
    </message>
</context>
<context>
    <name>LauncherMenu</name>
    <message>
        <source>Launcher</source>
        <translation>Lanceur</translation>
    </message>
    <message>
        <source>&amp;Minimise</source>
        <translation>&amp;Réduire</translation>
    </message>
    <message>
        <source>&amp;Reset fingerprint login</source>
        <translation>Réinitialiser la connexion par &amp;empreinte</translation>
    </message>
    <message>
        <source>&amp;Copy diagnostics</source>
        <translation>&amp;Copier le diagnostic</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Quitter</translation>
    </message>
    <message>
        <source>Open the menu</source>
        <translation>Ouvrir le menu</translation>
    </message>
</context>
<context>
    <name>LauncherView</name>
    <message>
        <source>Not available at present</source>
        <translation>Indisponible pour le moment</translation>
    </message>
</context>
<context>
    <name>NewsView</name>
    <message>
        <source>News</source>
        <translation>Actualités</translation>
    </message>
</context>
</TS>
