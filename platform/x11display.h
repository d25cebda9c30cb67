#pragma once

#include <QSize>

/// The pixels of the X display that the environment names, asked of its server over a connection of
/// its own, so before the toolkit starts; empty if it does not answer.
QSize x11DisplaySize();
