#pragma once

#include "sharing/share_tool.h"

/// What the module "sharing" exports under the name sharing_module: SHARE_Tool::shareByBt itself.
using SharingModule = bool (*)(const SHARE_Tool::OBJECT_INFO& info, const QString& path);
