#pragma once

#include "extras/safetexts.h"
#include "lang/texts.h"
#include "platform/zoptionsmenu.h"
#include "tests/lang/languages.h"
#include "tests/support/mainwidget.h"

#include <memory>

/// The main window below the screens of the module "extras", in a language that is installed.
inline std::unique_ptr<QWidget> mainWidgetForSafe(const QString& language)
{
    auto main = showMainWidget();
    loadTexts(stagedLanguageFile(language));
    SafeTexts::load(stagedLanguageFile(language));
    ZOptionsMenu::setSoftKeyTexts(LANG_SELECT, LANG_BACK);
    return main;
}
