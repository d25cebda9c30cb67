# For ~/.profile: starts Quarn after the login on the first console. The shell is there when it ends.
if [ "$(tty)" = /dev/tty1 ] && [ -z "${DISPLAY-}${WAYLAND_DISPLAY-}" ]; then
    QT_QPA_PLATFORM=linuxfb quarn
fi
