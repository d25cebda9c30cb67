// Sending a file by Bluetooth, which the platform's sharing service does.

#include "shell/fm.h"

void FM::slot_SendBt() {}
