# What the program draws on.

# can_draw_vnc: whether the toolkit has its plugin for VNC, which is in a package of its own. Of a toolkit
# that lies elsewhere nothing is known.
can_draw_vnc()
{
    [ -d "$toolkit" ] || return 0
    [ -e "$toolkit/platforms/libqvnc.so" ] && return 0
    for folder in "${QT_QPA_PLATFORM_PLUGIN_PATH-}" "${QT_PLUGIN_PATH-}/platforms"; do
        [ ! -e "$folder/libqvnc.so" ] || return 0
    done
    return 1
}

# choose_vnc PORT: lets the program draw for VNC. The toolkit's server would listen on all addresses, so
# without what keeps it to this machine there is none.
choose_vnc()
{
    case $1 in
    *[!0-9]* | ??????* | '') port=0 ;;
    *) port=$1 ;;
    esac
    if [ "$port" -lt 1 ] || [ "$port" -gt 65535 ]; then
        say "a port is a number from 1 to 65535"
        return 2
    fi
    guard=$programs/modules/vncloopback.so
    case $guard in
    *[:\ ]*)
        say "for VNC there must be no blank or colon in $programs"
        return 1
        ;;
    esac
    if [ ! -r "$guard" ]; then
        say "$guard is missing; install the package again"
        return 1
    fi
    if ! can_draw_vnc; then
        say "the toolkit has no plugin for VNC; Debian has it in the package qt6-qpa-plugins"
        return 1
    fi
    export QT_QPA_PLATFORM="vnc:size=480x640:port=$port" LD_PRELOAD="$guard${LD_PRELOAD:+:$LD_PRELOAD}"
}

# choose_display ARGUMENT...: without a window system the program draws on the framebuffer; without that,
# and nothing said of another display, there is none.
choose_display()
{
    [ -z "${QT_QPA_PLATFORM-}${DISPLAY-}${WAYLAND_DISPLAY-}${WAYLAND_SOCKET-}" ] || return 0
    [ "${XDG_SESSION_TYPE-}" != wayland ] || return 0
    for word in "$@"; do
        case $word in
        -platform | --platform | -display | --display) return 0 ;;
        esac
    done
    if [ -w "$framebuffer" ]; then
        export QT_QPA_PLATFORM=linuxfb
    elif [ -e "$framebuffer" ]; then
        say "no display: only root and the group video may draw on $framebuffer"
        return 1
    else
        say "no display: neither DISPLAY nor WAYLAND_DISPLAY is set, and there is no $framebuffer"
        return 1
    fi
}
