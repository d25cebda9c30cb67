#include "extras/unfinished.h"

#include "extras/aside.h"
#include "extras/entrypage.h"
#include "extras/journals.h"
#include "extras/operation.h"
#include "extras/operationrun.h"
#include "extras/operationtexts.h"
#include "extras/safetexts.h"
#include "extras/waiting.h"
#include "files/names.h"
#include "lang/texts.h"
#include "platform/zlistrowpainter.h"
#include "widgets/errorbox.h"

#include <atomic>
#include <cerrno>
#include <memory>

namespace
{

enum class Choice { Finish, TakeBack, Forget, Later };

struct ChoiceRow {
    Choice choice;
    EntryPage::Row row;
};

QList<ChoiceRow> choicesFor(const InterruptedOperation& found)
{
    const SafeTexts& texts = SafeTexts::instance();
    QList<ChoiceRow> choices;
    if (!found.isDamaged)
        choices.append({Choice::Finish, {texts.finish, texts.finishing, {}}});
    if (found.canTakeBack)
        choices.append(
            {Choice::TakeBack,
             {texts.takeBack,
              found.request.kind == OperationKind::Move ? texts.takeBackMove : texts.takeBackCopy,
              {}}});
    choices.append({Choice::Later, {texts.later, texts.laterAsks, {}}});
    // The last: a drive that is away may come back.
    choices.append({Choice::Forget, {texts.forget, texts.forgetting, {}}});
    return choices;
}

/// What was being done, with what and where to.
QStringList linesFor(const InterruptedOperation& found)
{
    const SafeTexts& texts = SafeTexts::instance();
    if (found.isDamaged)
        return {found.isOlder ? texts.older : texts.damaged};
    QStringList lines;
    const QString title = titleOf(found.request.kind) + QStringLiteral(": ");
    if (found.request.sources.size() == 1)
        lines.append(title + shownNameOf(found.request.sources.first()));
    else
        lines.append(title +
                     filledText(texts.entries, QString::number(found.request.sources.size())));
    if (found.request.kind != OperationKind::Delete)
        lines.append(ZListRowPainter::visibleText(decodeName(found.request.target)));
    if (found.wasCancelled)
        lines.append(texts.wasCancelled);
    if (found.isDamagedInPart)
        lines.append(texts.damaged);
    if (found.replaced > 0 && found.canTakeBack)
        lines.append(filledText(texts.replacedStay, QString::number(found.replaced)));
    return lines;
}

Choice askAbout(const InterruptedOperation& found)
{
    const QList<ChoiceRow> choices = choicesFor(found);
    EntryPage page(SafeTexts::instance().unfinished);
    QList<EntryPage::Row> rows;
    for (const ChoiceRow& choice : choices)
        rows.append(choice.row);
    page.setLines(linesFor(found));
    page.setRows(rows, true);
    page.setSoftKeys(LANG_SELECT, SafeTexts::instance().later);
    const PageAnswer answer = answerOn(page);
    if (answer.kind == PageAnswer::Row)
        return choices.at(answer.row).choice;
    return answer.kind == PageAnswer::Left ? choices.at(page.currentRow()).choice : Choice::Later;
}

/// Whether anything was done.
bool goOn(std::unique_ptr<Operation> operation, const QString& title)
{
    if (operation == nullptr) {
        // Another instance has taken it meanwhile.
        if (errno != EWOULDBLOCK)
            showError(errno == EBADMSG ? SafeTexts::instance().damaged : errorText(errno));
        return false;
    }
    OperationRun run(std::move(operation), title);
    run.work();
    return true;
}

/// What it has left half done may be much, on a medium that takes its time.
bool forget(const QByteArray& journal)
{
    const auto isGone = std::make_shared<std::atomic<bool>>(false);
    runAside(
        SafeTexts::instance().forget,
        [journal, isGone](const std::atomic<bool>&) { *isGone = discardJournal(journal); },
        [] { return QStringList(); });
    return *isGone;
}

bool doChoice(Choice choice, const InterruptedOperation& found)
{
    switch (choice) {
    case Choice::Finish:
        return goOn(Operation::finish(found.journal), titleOf(found.request.kind));
    case Choice::TakeBack:
        return goOn(Operation::takeBack(found.journal), SafeTexts::instance().takingBack);
    case Choice::Forget:
        return forget(found.journal);
    case Choice::Later:
        break;
    }
    return false;
}

} // namespace

bool offerUnfinishedOperations()
{
    bool anyDone = false;
    const QList<InterruptedOperation> all = findJournals();
    for (const InterruptedOperation& found : all)
        anyDone = doChoice(askAbout(found), found) || anyDone;
    return anyDone;
}
