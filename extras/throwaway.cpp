#include "extras/throwaway.h"

#include "extras/entrypage.h"
#include "extras/operation.h"
#include "extras/operationrun.h"
#include "extras/operationtexts.h"
#include "extras/safetexts.h"
#include "extras/slices.h"
#include "extras/trash.h"
#include "extras/trashwords.h"
#include "extras/waiting.h"
#include "files/entry.h"
#include "files/names.h"
#include "lang/texts.h"
#include "widgets/kwidget.h"

#include <QElapsedTimer>

#include <memory>
#include <optional>

namespace
{

bool asked(const QString& title, const QString& text)
{
    return textView->showText(title, text, Qt::AlignHCenter, QStringLiteral("res/img/delete.png"),
                              kWidget::Question) == 1;
}

/// What has become of entries, and of those that are still to go.
class ThrowingAway
{
public:
    explicit ThrowingAway(const QList<QByteArray>& paths) : paths_(paths)
    {
        for (const QByteArray& path : paths)
            ids_.append(entryId(decodeName(path)));
    }

    /// Goes on for about that long; false when it is at the end.
    bool step(int milliseconds)
    {
        QElapsedTimer timer;
        timer.start();
        while (next_ < paths_.size() && timer.elapsed() < milliseconds)
            throwAway(next_++);
        return next_ < paths_.size();
    }

    qsizetype done() const { return next_; }
    const QList<QByteArray>& withoutTrash() const { return withoutTrash_; }
    const QList<TrashFailure>& failures() const { return failures_; }
    /// Those that are still where they were, the ones without a trash not among them.
    QStringList left() const
    {
        QStringList result;
        for (const TrashFailure& failure : failures_)
            result.append(decodeName(failure.path));
        for (const QByteArray& path : paths_.sliced(next_))
            result.append(decodeName(path));
        return result;
    }

private:
    void throwAway(qsizetype index)
    {
        const QByteArray& path = paths_.at(index);
        // What has taken its name while the question was open is not what was meant.
        const bool isMeant = ids_.at(index) && entryId(decodeName(path)) == ids_.at(index);
        const Trash::Result result =
            isMeant ? trash_.put(path) : Trash::Result{Trash::Outcome::Gone, 0, {}};
        if (result.outcome == Trash::Outcome::NoTrash)
            withoutTrash_.append(path);
        else if (result.outcome != Trash::Outcome::Done)
            failures_.append({path, result.outcome, result.error});
    }

    Trash trash_{Trash::placesOfUser()};
    QList<QByteArray> paths_;
    QList<std::optional<EntryId>> ids_;
    QList<QByteArray> withoutTrash_;
    QList<TrashFailure> failures_;
    qsizetype next_ = 0;
};

void tell(const QList<TrashFailure>& failures)
{
    const SafeTexts& texts = SafeTexts::instance();
    QList<EntryPage::Row> rows;
    for (const TrashFailure& failure : failures)
        rows.append(
            {shownNameOf(failure.path), reasonText(failure), {shownFolderOf(failure.path)}});
    EntryPage page(texts.trash);
    page.setLines({filledText(texts.notDone, QString::number(failures.size()))});
    page.setRows(rows);
    page.setSoftKeys({}, LANG_BACK);
    while (answerOn(page).kind == PageAnswer::Row) {
    }
}

/// Deletes what has no trash, if the user agrees. What is still there then.
QStringList deletedForGood(const QList<QByteArray>& paths)
{
    QStringList names;
    for (const QByteArray& path : paths)
        names.append(decodeName(path));
    if (paths.isEmpty())
        return names;
    OperationRequest request;
    request.kind = OperationKind::Delete;
    request.sources = paths;
    OperationRun run(std::make_unique<Operation>(request), titleOf(request.kind));
    const SafeTexts& texts = SafeTexts::instance();
    // It is counted before the question: only what that has named goes.
    if (!run.survey() || !run.askToDelete(texts.forGood, texts.noTrash))
        return names;
    run.work();
    return run.left(names);
}

} // namespace

ExtrasModule::Outcome throwAwayEntries(const QList<QByteArray>& paths)
{
    const SafeTexts& texts = SafeTexts::instance();
    ThrowingAway work(paths);
    if (!asked(texts.toTrash, namesText(paths)))
        return {false, {}};
    runInSlices(
        texts.movingToTrash, [&work](int milliseconds) { return work.step(milliseconds); },
        [&work, &texts, &paths] {
            return QStringList{filledText(texts.entries, QString::number(work.done()) +
                                                             QStringLiteral(" / ") +
                                                             QString::number(paths.size()))};
        });
    if (!work.failures().isEmpty())
        tell(work.failures());
    return {true, work.left() + deletedForGood(work.withoutTrash())};
}
