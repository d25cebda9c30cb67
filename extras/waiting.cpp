#include "extras/waiting.h"

#include "extras/entrypage.h"
#include "platform/zapplication.h"

#include <optional>

PageAnswer answerOn(EntryPage& page)
{
    std::optional<PageAnswer> answer;
    QObject receiver;
    QObject::connect(&page, &EntryPage::leftPressed, &receiver,
                     [&answer] { answer = PageAnswer{PageAnswer::Left, -1}; });
    QObject::connect(&page, &EntryPage::rightPressed, &receiver,
                     [&answer] { answer = PageAnswer{PageAnswer::Right, -1}; });
    QObject::connect(&page, &EntryPage::chosen, &receiver,
                     [&answer](int row) { answer = PageAnswer{PageAnswer::Row, row}; });
    page.show();
    ZApplication::waitUntil([&answer] { return answer.has_value(); });
    return answer.value_or(PageAnswer());
}
