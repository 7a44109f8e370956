# Notifications of the desktop. libsystemd is loaded when one is shown, so only its header is needed here.
set(PEDVAR_NOTIFICATION_SOURCES
    notifications/desktop_notifications.cpp)
