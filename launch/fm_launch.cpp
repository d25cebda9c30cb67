// The main window's commands that start or reach other programs.

#include "shell/fm.h"

// Their keys and menu items are there; using one does nothing yet.
void FM::LyraPlayer() {}
void FM::slot_OpenWith() {}
void FM::slot_ClickFile([[maybe_unused]] bool picked) {}
void FM::slot_SendBt() {}
void FM::slot_AddBookMark() {}
