#include "sharing/sharetexts.h"

ShareTexts& ShareTexts::instance()
{
    static ShareTexts texts;
    return texts;
}
