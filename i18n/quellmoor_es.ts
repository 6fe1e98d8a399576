<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es" sourcelanguage="en">
<context>
    <name>AlertPanel</name>
    <message>
        <source>OK</source>
        <translation>Aceptar</translation>
    </message>
</context>
<context>
    <name>Alerts</name>
    <message>
        <source>Diagnostics Copied</source>
        <translation>Diagnóstico copiado</translation>
    </message>
    <message>
        <source>They are on the clipboard. Paste them into your message to support.</source>
        <translation>Está en el portapapeles. Pégalo en tu mensaje al servicio de ayuda.</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Cerrar</translation>
    </message>
    <message>
        <source>Use Touch ID to login to </source>
        <translation>Usa Touch ID para iniciar sesión en </translation>
    </message>
    <message>
        <source>Login to %1</source>
        <translation>Iniciar sesión en %1</translation>
    </message>
    <message>
        <source>Enable Touch ID</source>
        <translation>Activar Touch ID</translation>
    </message>
    <message>
        <source>Enable</source>
        <translation>Activar</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancelar</translation>
    </message>
    <message>
        <source>Touch ID Has Been Reset</source>
        <translation>Touch ID se ha restablecido</translation>
    </message>
    <message>
        <source>To setup Touch ID again login to your account with the correct username and password and select Enable.</source>
        <translation>Para volver a configurar Touch ID, inicia sesión en tu cuenta con el nombre de usuario y la contraseña correctos y elige «Activar».</translation>
    </message>
    <message>
        <source>Two-step Authentication</source>
        <translation>Autenticación en dos pasos</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>Confirmar</translation>
    </message>
    <message>
        <source>Ok</source>
        <translation>Aceptar</translation>
    </message>
    <message>
        <source>Touch ID is not yet enabled</source>
        <translation>Touch ID aún no está activado</translation>
    </message>
    <message>
        <source>To enable Touch ID, please login to your account and press play.</source>
        <translation>Para activar Touch ID, inicia sesión en tu cuenta y pulsa «Jugar».</translation>
    </message>
    <message>
        <source>Touch ID is not available</source>
        <translation>Touch ID no está disponible</translation>
    </message>
    <message>
        <source>Touch ID is not available on this device.</source>
        <translation>Touch ID no está disponible en este dispositivo.</translation>
    </message>
    <message>
        <source>Launcher Update Required</source>
        <translation>Hay que actualizar el lanzador</translation>
    </message>
    <message>
        <source>Update</source>
        <translation>Actualizar</translation>
    </message>
    <message>
        <source>Exit Launcher</source>
        <translation>Salir del lanzador</translation>
    </message>
    <message>
        <source>There is a required update available for the launcher.</source>
        <translation>Hay disponible una actualización obligatoria del lanzador.</translation>
    </message>
</context>
<context>
    <name>CustomTouchBar</name>
    <message>
        <source>PLAY</source>
        <translation>JUGAR</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Jugar</translation>
    </message>
    <message>
        <source>Fingerprint</source>
        <translation>Huella digital</translation>
    </message>
    <message>
        <source>Log in with your fingerprint</source>
        <translation>Inicia sesión con tu huella digital</translation>
    </message>
    <message>
        <source>Notes</source>
        <translation>Novedades</translation>
    </message>
    <message>
        <source>Release notes</source>
        <translation>Notas de la versión</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>Cuenta</translation>
    </message>
    <message>
        <source>Manage account</source>
        <translation>Gestionar la cuenta</translation>
    </message>
    <message>
        <source>Guide</source>
        <translation>Guía</translation>
    </message>
    <message>
        <source>Player’s guide</source>
        <translation>Guía del jugador</translation>
    </message>
    <message>
        <source>Community</source>
        <translation>Comunidad</translation>
    </message>
    <message>
        <source>Community forum</source>
        <translation>Foro de la comunidad</translation>
    </message>
</context>
<context>
    <name>Fingerprint</name>
    <message>
        <source>The swipe was too short. Try again.</source>
        <translation>El deslizamiento ha sido demasiado corto. Inténtalo de nuevo.</translation>
    </message>
    <message>
        <source>Put your finger on the middle of the reader.</source>
        <translation>Pon el dedo en el centro del lector.</translation>
    </message>
    <message>
        <source>Lift your finger and try again.</source>
        <translation>Levanta el dedo e inténtalo de nuevo.</translation>
    </message>
    <message>
        <source>Try your finger again.</source>
        <translation>Vuelve a intentarlo con el dedo.</translation>
    </message>
</context>
<context>
    <name>FingerprintPanel</name>
    <message>
        <source>Put your finger on the reader.</source>
        <translation>Pon el dedo en el lector.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancelar</translation>
    </message>
</context>
<context>
    <name>Launcher</name>
    <message>
        <source>News</source>
        <translation>Noticias</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>Cuenta</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Contraseña</translation>
    </message>
    <message>
        <source>PLAY</source>
        <translation>JUGAR</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Jugar</translation>
    </message>
    <message>
        <source>Forgot password?</source>
        <translation>¿Olvidaste la contraseña?</translation>
    </message>
    <message>
        <source>Create an account</source>
        <translation>Crear una cuenta</translation>
    </message>
    <message>
        <source>Home</source>
        <translation>Inicio</translation>
    </message>
    <message>
        <source>Home page</source>
        <translation>Página de inicio</translation>
    </message>
    <message>
        <source>Support</source>
        <translation>Ayuda</translation>
    </message>
    <message>
        <source>Community</source>
        <translation>Comunidad</translation>
    </message>
    <message>
        <source>Community forum</source>
        <translation>Foro de la comunidad</translation>
    </message>
    <message>
        <source>Manage account</source>
        <translation>Gestionar la cuenta</translation>
    </message>
    <message>
        <source>Guide</source>
        <translation>Guía</translation>
    </message>
    <message>
        <source>Player’s guide</source>
        <translation>Guía del jugador</translation>
    </message>
    <message>
        <source>Notes</source>
        <translation>Novedades</translation>
    </message>
    <message>
        <source>Release notes</source>
        <translation>Notas de la versión</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Progreso</translation>
    </message>
    <message>
        <source>Minimise</source>
        <translation>Minimizar</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Cerrar</translation>
    </message>
</context>
<context>
    <name>LauncherMenu</name>
    <message>
        <source>Launcher</source>
        <translation>Lanzador</translation>
    </message>
    <message>
        <source>&amp;Minimise</source>
        <translation>&amp;Minimizar</translation>
    </message>
    <message>
        <source>&amp;Reset fingerprint login</source>
        <translation>&amp;Restablecer el acceso con huella</translation>
    </message>
    <message>
        <source>&amp;Copy diagnostics</source>
        <translation>&amp;Copiar el diagnóstico</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Salir</translation>
    </message>
    <message>
        <source>Open the menu</source>
        <translation>Abrir el menú</translation>
    </message>
</context>
<context>
    <name>LauncherView</name>
    <message>
        <source>Not available at present</source>
        <translation>No disponible por ahora</translation>
    </message>
</context>
<context>
    <name>NewsView</name>
    <message>
        <source>News</source>
        <translation>Noticias</translation>
    </message>
</context>
</TS>
