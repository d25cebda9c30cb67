#!/bin/sh
# Starts the file manager in the user's own work folder, $XDG_DATA_HOME/quarn. That is made at the first
# start: settings and tables are copied into it, and the rest are links to what is installed. What the
# user changed or took away stays so; a newer package adds what is new, and renews what nobody changed.
#
# Each start runs this, so what is as it should be costs no process: tests and reads of the shell alone.
# shellcheck disable=SC3013,SC2086  # every shell of today knows -ef; the lists are words

edition=@EDITION@
version=@VERSION@
programs=@PROGRAMS@
tools=@TOOLS@
data=@DATA@

# Paths in a work folder.
linked_programs="@LINKED_PROGRAMS@"
linked_tools="@LINKED_TOOLS@"
linked_data="res @LINKED_DATA@"
copied="@COPIED@"

# Where the toolkit has its plugins.
toolkit=@TOOLKIT@
# What is drawn on where there is no window system.
framebuffer=/dev/fb0

set -f
newline='
'
