# What is said to the user, and what tools say when they fail.

say()
{
    printf 'quarn: %s\n' "$*" >&2
}

usage()
{
    cat <<'TEXT'
Usage: quarn [OPTION]...

Starts the file manager, or shows the one that runs.

  --help         shows this
  --version      shows the version
  --vnc[=PORT]   shows it over VNC, on port 5900 if none is given, to programs of
                 this machine alone; it asks for no password

Other options go to the toolkit: "-platform linuxfb" starts on a bare framebuffer, which is also what it
does where there is no window system.
TEXT
}

# problem: what went wrong last, in the words of the tool that could not do it.
problem=

# attempt COMMAND...: runs a command; keeps what it says if it fails.
attempt()
{
    problem=$("$@" 2>&1) && return 0
    problem=${problem%%"$newline"*}
    return 1
}

# attempt_to FILE COMMAND...: puts what a command prints into a file. The shell's own writing would not
# tell why it failed.
attempt_to()
{
    into=$1
    shift
    content=$("$@") || return 1
    problem=$( { printf '%s\n' "$content" | cat >"$into"; } 2>&1) && return 0
    problem=${problem%%"$newline"*}
    problem=${problem#"$0": *: }
    return 1
}
