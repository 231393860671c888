<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es" sourcelanguage="en">
<context>
    <name>AppsSection</name>
    <message>
        <source>APPS</source>
        <translation>APLICACIONES</translation>
    </message>
    <message>
        <source>Play audio in an app and it shows up here.</source>
        <translation>Reproduzca audio en una aplicación y aparecerá aquí.</translation>
    </message>
</context>
<context>
    <name>ChannelRow</name>
    <message>
        <source>Remove from list</source>
        <translation>Quitar de la lista</translation>
    </message>
    <message>
        <source>Adjusts this app&apos;s output volume</source>
        <translation>Ajusta el volumen de esta aplicación</translation>
    </message>
    <message>
        <source>Paused — keeps this volume when it plays again</source>
        <translation>En pausa: conservará este volumen cuando vuelva a sonar</translation>
    </message>
</context>
<context>
    <name>ClosingCard</name>
    <message>
        <source>Closing this window</source>
        <translation>Cerrar esta ventana</translation>
    </message>
    <message>
        <source>This desktop shows no tray icon. Unless you choose otherwise, Sonvel keeps running when you close this window, and every app stays as you set it; start Sonvel again to open the window. Quitting gives every app its own sound back.</source>
        <translation>Este escritorio no muestra iconos en la bandeja. Si no elige otra cosa, al cerrar esta ventana Sonvel sigue en marcha y cada aplicación queda como la ajustó; inicie Sonvel de nuevo para abrir la ventana. Al salir, cada aplicación recupera su propio sonido.</translation>
    </message>
    <message>
        <source>Keep Running</source>
        <translation>Seguir en marcha</translation>
    </message>
    <message>
        <source>Quit on Close</source>
        <translation>Salir al cerrar</translation>
    </message>
</context>
<context>
    <name>ErrorText</name>
    <message>
        <source>Audio control error</source>
        <translation>Error al controlar el audio</translation>
    </message>
</context>
<context>
    <name>IdleBadge</name>
    <message>
        <source>idle</source>
        <translation>inactiva</translation>
    </message>
</context>
<context>
    <name>MasterSection</name>
    <message>
        <source>OUTPUT</source>
        <translation>SALIDA</translation>
    </message>
    <message>
        <source>System Output</source>
        <translation>Salida del sistema</translation>
    </message>
    <message>
        <source>This output device has no adjustable master volume.</source>
        <translation>El volumen general de este dispositivo de salida no se puede ajustar.</translation>
    </message>
</context>
<context>
    <name>MenuBarActionRow</name>
    <message>
        <source>Check for Updates</source>
        <translation>Buscar actualizaciones</translation>
    </message>
    <message>
        <source>Updates are not configured in this build.</source>
        <translation>Esta compilación no tiene configuradas las actualizaciones.</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Salir</translation>
    </message>
    <message>
        <source>On Close…</source>
        <translation>Al cerrar…</translation>
    </message>
</context>
<context>
    <name>OutputMenu</name>
    <message>
        <source>Follow System Output</source>
        <translation>Seguir la salida del sistema</translation>
    </message>
</context>
<context>
    <name>PanelFooter</name>
    <message>
        <source>Reset all</source>
        <translation>Restablecer todo</translation>
    </message>
    <message>
        <source>Everything → Speakers</source>
        <translation>Todo → Altavoces</translation>
    </message>
</context>
<context>
    <name>PermissionCard</name>
    <message>
        <source>To show and adjust each app&apos;s sound, Sonvel needs the sound server&apos;s permission to move and play what apps play. Nothing is recorded, saved, or sent; no restart, no driver. You can revoke it anytime.</source>
        <translation>Para mostrar y ajustar el sonido de cada aplicación, Sonvel necesita que el servidor de sonido le permita desviar y reproducir lo que suena en ellas. No se graba, guarda ni envía nada; sin reiniciar y sin controladores. Puede retirar el permiso cuando quiera.</translation>
    </message>
    <message>
        <source>Tries whether the sound server lets Sonvel control other apps</source>
        <translation>Comprueba si el servidor de sonido permite a Sonvel controlar otras aplicaciones</translation>
    </message>
    <message>
        <source>Opens the page on how to give access to sound</source>
        <translation>Abre la página que explica cómo dar acceso al sonido</translation>
    </message>
    <message>
        <source>Access is currently denied. Allow “Sonvel” in the rules of the sound server, then it appears automatically.</source>
        <translation>El acceso está denegado en este momento. Permita «Sonvel» en las reglas del servidor de sonido y todo aparecerá automáticamente.</translation>
    </message>
    <message>
        <source>This desktop has no settings for access to sound. Restart Sonvel outside of its sandbox, or see docs/access.md.</source>
        <translation>Este escritorio no tiene ajustes de acceso al sonido. Reinicie Sonvel fuera de su entorno aislado o consulte docs/access.md.</translation>
    </message>
    <message>
        <source>Waiting…</source>
        <translation>Esperando…</translation>
    </message>
    <message>
        <source>Grant Audio Access</source>
        <translation>Conceder acceso al audio</translation>
    </message>
    <message>
        <source>Open Settings</source>
        <translation>Abrir ajustes</translation>
    </message>
</context>
<context>
    <name>ServerNotice</name>
    <message>
        <source>Sound runs on PulseAudio here, which Sonvel can&apos;t control. Install the package pipewire-audio and log in again.</source>
        <translation>Aquí el sonido funciona con PulseAudio, que Sonvel no puede controlar. Instale el paquete pipewire-audio y vuelva a iniciar sesión.</translation>
    </message>
    <message>
        <source>Waiting for the sound service to start.</source>
        <translation>Esperando a que se inicie el servicio de sonido.</translation>
    </message>
    <message>
        <source>The sound service has stopped. Sonvel goes on by itself when it is back.</source>
        <translation>El servicio de sonido se ha detenido. Sonvel continuará por sí mismo cuando vuelva.</translation>
    </message>
</context>
<context>
    <name>UpdateNotes</name>
    <message>
        <source>Release notes</source>
        <translation>Notas de la versión</translation>
    </message>
</context>
<context>
    <name>UpdateWords</name>
    <message>
        <source>The update server can&apos;t be reached; check the network connection and try again.</source>
        <translation>No se puede acceder al servidor de actualizaciones; compruebe la conexión de red e inténtelo de nuevo.</translation>
    </message>
    <message>
        <source>The connection to the update server isn&apos;t secure, so nothing was read from it.</source>
        <translation>La conexión con el servidor de actualizaciones no es segura, así que no se leyó nada de él.</translation>
    </message>
    <message>
        <source>The update server doesn&apos;t have what was asked for; try again later.</source>
        <translation>El servidor de actualizaciones no tiene lo que se le pidió; inténtelo más tarde.</translation>
    </message>
    <message>
        <source>The update server took too long to answer; try again later.</source>
        <translation>El servidor de actualizaciones tardó demasiado en responder; inténtelo más tarde.</translation>
    </message>
    <message>
        <source>The connection to the update server broke off before everything had arrived; try again later.</source>
        <translation>La conexión con el servidor de actualizaciones se cortó antes de que llegara todo; inténtelo más tarde.</translation>
    </message>
    <message>
        <source>The update server points to an address that isn&apos;t secure, so it was not followed.</source>
        <translation>El servidor de actualizaciones remite a una dirección que no es segura, así que no se siguió.</translation>
    </message>
    <message>
        <source>The update server points from one address to another without an end.</source>
        <translation>El servidor de actualizaciones remite de una dirección a otra sin fin.</translation>
    </message>
    <message>
        <source>The list of updates is too large to be genuine, so it was not read.</source>
        <translation>La lista de actualizaciones es demasiado grande para ser auténtica, así que no se leyó.</translation>
    </message>
    <message>
        <source>The list of updates isn&apos;t signed by the maker of this program, so it was not used.</source>
        <translation>La lista de actualizaciones no está firmada por el autor de este programa, así que no se usó.</translation>
    </message>
    <message>
        <source>The list of updates is damaged and can&apos;t be read.</source>
        <translation>La lista de actualizaciones está dañada y no se puede leer.</translation>
    </message>
    <message>
        <source>The list of updates belongs to another program, so it was not used.</source>
        <translation>La lista de actualizaciones es de otro programa, así que no se usó.</translation>
    </message>
    <message>
        <source>The list of updates has expired, so there may be newer versions that it doesn&apos;t name.</source>
        <translation>La lista de actualizaciones ha caducado; puede haber versiones más nuevas que no mencione.</translation>
    </message>
    <message>
        <source>The update server offers something older than it did before, so it was not used.</source>
        <translation>El servidor de actualizaciones ofrece algo más antiguo que antes, así que no se usó.</translation>
    </message>
    <message>
        <source>The update is offered at an address that isn&apos;t secure, so it was not downloaded.</source>
        <translation>La actualización se ofrece en una dirección que no es segura, así que no se descargó.</translation>
    </message>
    <message>
        <source>The update is offered without all that is needed to check it, so it was not downloaded.</source>
        <translation>La actualización se ofrece sin todo lo necesario para comprobarla, así que no se descargó.</translation>
    </message>
    <message>
        <source>The update is too large to be genuine, so it was not downloaded.</source>
        <translation>La actualización es demasiado grande para ser auténtica, así que no se descargó.</translation>
    </message>
    <message>
        <source>The downloaded update doesn&apos;t have the size that was announced, so it was deleted.</source>
        <translation>La actualización descargada no tiene el tamaño anunciado, así que se borró.</translation>
    </message>
    <message>
        <source>The downloaded update isn&apos;t what its maker signed, so it was deleted.</source>
        <translation>La actualización descargada no es la que firmó su autor, así que se borró.</translation>
    </message>
    <message>
        <source>There isn&apos;t enough memory or space on the disk for the update.</source>
        <translation>No hay suficiente memoria o espacio en el disco para la actualización.</translation>
    </message>
    <message>
        <source>The update isn&apos;t made for the way this program is installed, so it was not installed.</source>
        <translation>La actualización no corresponde a la forma en que está instalado este programa, así que no se instaló.</translation>
    </message>
    <message>
        <source>The program&apos;s file can&apos;t be replaced, so the update was not installed.</source>
        <translation>No se puede reemplazar el archivo del programa, así que la actualización no se instaló.</translation>
    </message>
    <message>
        <source>This desktop has no package installer that takes the update, so it was not installed.</source>
        <translation>Este escritorio no tiene un instalador de paquetes que acepte la actualización, así que no se instaló.</translation>
    </message>
    <message>
        <source>The new version couldn&apos;t be started, so the previous one is back.</source>
        <translation>No se pudo iniciar la versión nueva, así que ha vuelto la anterior.</translation>
    </message>
    <message>
        <source>The new version didn&apos;t become ready in time, so the previous one is back.</source>
        <translation>La versión nueva no estuvo lista a tiempo, así que ha vuelto la anterior.</translation>
    </message>
    <message>
        <source>The new version ended within a minute of its start, so the previous one is back.</source>
        <translation>La versión nueva terminó antes de un minuto, así que ha vuelto la anterior.</translation>
    </message>
    <message>
        <source>%1 is available</source>
        <translation>%1 está disponible</translation>
    </message>
    <message>
        <source>You have version %1. The download is %2.</source>
        <translation>Tiene la versión %1. La descarga ocupa %2.</translation>
    </message>
    <message>
        <source>Download</source>
        <translation>Descargar</translation>
    </message>
    <message>
        <source>Not Now</source>
        <translation>Ahora no</translation>
    </message>
    <message>
        <source>Downloading %1</source>
        <translation>Descargando %1</translation>
    </message>
    <message>
        <source>Nothing is installed before you say so.</source>
        <translation>No se instala nada hasta que usted lo indique.</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 de %2</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancelar</translation>
    </message>
    <message>
        <source>%1 is ready to install</source>
        <translation>%1 está lista para instalarse</translation>
    </message>
    <message>
        <source>It is complete and signed by its maker. The desktop&apos;s package installer takes it from here and may ask for your password.</source>
        <translation>La actualización está completa y firmada por su autor. A partir de aquí se encarga el instalador de paquetes del escritorio, que puede pedirle su contraseña.</translation>
    </message>
    <message>
        <source>It is complete and signed by its maker. Sonvel returns every application&apos;s sound to normal, quits and starts again.</source>
        <translation>La actualización está completa y firmada por su autor. Sonvel devuelve a cada aplicación su sonido normal, se cierra y vuelve a iniciarse.</translation>
    </message>
    <message>
        <source>Install</source>
        <translation>Instalar</translation>
    </message>
    <message>
        <source>Install and Relaunch</source>
        <translation>Instalar y reiniciar</translation>
    </message>
    <message>
        <source>The package installer has the update</source>
        <translation>El instalador de paquetes tiene la actualización</translation>
    </message>
    <message>
        <source>Finish the installation of %1 there, then quit Sonvel and open it again.</source>
        <translation>Termine allí la instalación de %1; después cierre Sonvel y vuelva a abrirlo.</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>Aceptar</translation>
    </message>
    <message>
        <source>Sonvel couldn&apos;t be updated</source>
        <translation>No se pudo actualizar Sonvel</translation>
    </message>
    <message>
        <source>Try Again</source>
        <translation>Reintentar</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Cerrar</translation>
    </message>
    <message>
        <source>Looking for a new version</source>
        <translation>Buscando una versión nueva</translation>
    </message>
    <message>
        <source>You have %1.</source>
        <translation>Tiene %1.</translation>
    </message>
    <message>
        <source>Sonvel is up to date</source>
        <translation>Sonvel está al día</translation>
    </message>
    <message>
        <source>Version %1 is the newest there is.</source>
        <translation>La versión %1 es la más reciente.</translation>
    </message>
    <message>
        <source>The new version needs a newer system</source>
        <translation>La versión nueva necesita un sistema más reciente</translation>
    </message>
    <message>
        <source>There is a newer version of Sonvel, but it doesn&apos;t run on this system. You keep version %1.</source>
        <translation>Hay una versión más nueva de Sonvel, pero no funciona en este sistema. Conserva la versión %1.</translation>
    </message>
    <message>
        <source>Verifying %1</source>
        <translation>Comprobando %1</translation>
    </message>
    <message>
        <source>Checking that it is complete and signed by its maker.</source>
        <translation>Se comprueba que esté completa y firmada por su autor.</translation>
    </message>
    <message>
        <source>Installing %1</source>
        <translation>Instalando %1</translation>
    </message>
    <message>
        <source>This takes a moment.</source>
        <translation>Tardará un momento.</translation>
    </message>
    <message>
        <source>%1 is installed</source>
        <translation>%1 está instalada</translation>
    </message>
    <message>
        <source>Sonvel quits now and starts again as the new version.</source>
        <translation>Sonvel se cierra ahora y vuelve a iniciarse con la versión nueva.</translation>
    </message>
</context>
<context>
    <name>sonvel::MixerViewModel</name>
    <message>
        <source>System Output</source>
        <translation>Salida del sistema</translation>
    </message>
    <message>
        <source>Device</source>
        <translation>Dispositivo</translation>
    </message>
    <message>
        <source>The chosen device</source>
        <translation>El dispositivo elegido</translation>
    </message>
</context>
<context>
    <name>sonvel::PanelText</name>
    <message>
        <source>The sound server is not running.</source>
        <translation>El servidor de sonido no está en marcha.</translation>
    </message>
    <message>
        <source>The sound server did not answer in time.</source>
        <translation>El servidor de sonido no respondió a tiempo.</translation>
    </message>
    <message>
        <source>The device is not there.</source>
        <translation>El dispositivo no está disponible.</translation>
    </message>
    <message>
        <source>The app is not there any more.</source>
        <translation>La aplicación ya no está.</translation>
    </message>
    <message>
        <source>The sound server does not allow it.</source>
        <translation>El servidor de sonido no lo permite.</translation>
    </message>
    <message>
        <source>%1 percent</source>
        <translation>%1 por ciento</translation>
    </message>
    <message>
        <source>%1 volume</source>
        <translation>Volumen de %1</translation>
    </message>
    <message>
        <source>Remove %1 from the mixer</source>
        <translation>Quitar %1 del mezclador</translation>
    </message>
    <message>
        <source>Unmute %1</source>
        <translation>Reactivar el sonido de %1</translation>
    </message>
    <message>
        <source>Mute %1</source>
        <translation>Silenciar %1</translation>
    </message>
    <message>
        <source>Unmute</source>
        <translation>Reactivar el sonido</translation>
    </message>
    <message>
        <source>Mute</source>
        <translation>Silenciar</translation>
    </message>
    <message>
        <source>Output for %1</source>
        <translation>Salida de %1</translation>
    </message>
    <message>
        <source>Welcome to Sonvel</source>
        <translation>Le damos la bienvenida a Sonvel</translation>
    </message>
    <message>
        <source>One permission to control app audio</source>
        <translation>Un permiso para controlar el audio de las aplicaciones</translation>
    </message>
    <message>
        <source>No apps have played audio yet.</source>
        <translation>Ninguna aplicación ha reproducido audio todavía.</translation>
    </message>
    <message numerus="yes">
        <source>%n playing</source>
        <comment>applications</comment>
        <translation>
            <numerusform>%n sonando</numerusform>
            <numerusform>%n sonando</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n idle</source>
        <comment>applications</comment>
        <translation>
            <numerusform>%n inactiva</numerusform>
            <numerusform>%n inactivas</numerusform>
        </translation>
    </message>
    <message>
        <source>Audio access was revoked. Audio was restored to its normal output.</source>
        <translation>Se retiró el acceso al audio. El audio ha vuelto a su salida normal.</translation>
    </message>
    <message>
        <source>Audio access was revoked. Audio restoration is retrying: %1</source>
        <translation>Se retiró el acceso al audio. Se vuelve a intentar restablecerlo: %1</translation>
    </message>
    <message>
        <source>%1 is not connected.</source>
        <translation>%1 no está conectado.</translation>
    </message>
    <message>
        <source>Until it is, you hear this app on %1.</source>
        <translation>Hasta que lo esté, esta aplicación se oye en %1.</translation>
    </message>
    <message>
        <source>Only part of this app’s sound can be controlled.</source>
        <translation>Solo se puede controlar una parte del sonido de esta aplicación.</translation>
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
        <translation>No hay dispositivo de salida</translation>
    </message>
    <message>
        <source>%1: muted</source>
        <translation>%1: silenciado</translation>
    </message>
    <message>
        <source>%1: %2%</source>
        <translation>%1: %2 %</translation>
    </message>
    <message>
        <source>Sonvel %1

A volume for every application. Apache licence 2.0.</source>
        <translation>Sonvel %1

Un volumen para cada aplicación. Licencia Apache 2.0.</translation>
    </message>
    <message>
        <source>
Updates come with %1.</source>
        <translation>
Las actualizaciones llegan con %1.</translation>
    </message>
    <message>
        <source>About Sonvel</source>
        <translation>Acerca de Sonvel</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Cerrar</translation>
    </message>
</context>
<context>
    <name>sonvel::UpdateWindow</name>
    <message>
        <source>Sonvel Update</source>
        <translation>Actualización de Sonvel</translation>
    </message>
</context>
<context>
    <name>sonvel::ui::TrayIcon</name>
    <message>
        <source>Open Sonvel</source>
        <translation>Abrir Sonvel</translation>
    </message>
    <message>
        <source>Mute</source>
        <translation>Silenciar</translation>
    </message>
    <message>
        <source>Start at login</source>
        <translation>Iniciar al entrar en la sesión</translation>
    </message>
    <message>
        <source>About Sonvel</source>
        <translation>Acerca de Sonvel</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Salir</translation>
    </message>
</context>
</TS>
