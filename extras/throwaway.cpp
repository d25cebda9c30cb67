#include "extras/throwaway.h"

#include "extras/aside.h"
#include "extras/entrypage.h"
#include "extras/foldercursor.h"
#include "extras/lateends.h"
#include "extras/operation.h"
#include "extras/operationrun.h"
#include "extras/operationtexts.h"
#include "extras/safetexts.h"
#include "extras/trash.h"
#include "extras/trashwords.h"
#include "extras/waiting.h"
#include "files/entry.h"
#include "files/names.h"
#include "lang/texts.h"
#include "widgets/kwidget.h"

#include <atomic>
#include <cerrno>
#include <memory>
#include <mutex>
#include <optional>

namespace
{

bool asked(const QString& title, const QString& text)
{
    return textView->showText(title, text, Qt::AlignHCenter, QStringLiteral("res/img/delete.png"),
                              kWidget::Question) == 1;
}

QList<QByteArray> parentsOf(const QList<QByteArray>& paths)
{
    QList<QByteArray> folders;
    for (const QByteArray& path : paths)
        folders.append(parentOf(path));
    return folders;
}

/// What has become of entries, and of those that are still to go. A thread of its own sees to that,
/// while others ask.
class ThrowingAway
{
public:
    explicit ThrowingAway(const QList<QByteArray>& paths) : paths_(paths)
    {
        for (const QByteArray& path : paths)
            ids_.append(entryId(decodeName(path)));
    }

    void run(const std::atomic<bool>& isStopped)
    {
        while (!isStopped && next_ < paths_.size())
            throwAway(next_, isStopped);
    }

    qsizetype done() const { return next_; }
    QList<QByteArray> withoutTrash() const
    {
        const std::lock_guard lock(mutex_);
        return withoutTrash_;
    }
    QList<TrashFailure> failures() const
    {
        const std::lock_guard lock(mutex_);
        return failures_;
    }
    /// Those that are still where they were, the ones without a trash not among them.
    QStringList left() const
    {
        const std::lock_guard lock(mutex_);
        QStringList result;
        for (const TrashFailure& failure : failures_)
            result.append(decodeName(failure.path));
        for (const QByteArray& path : paths_.sliced(next_))
            result.append(decodeName(path));
        return result;
    }

private:
    void throwAway(qsizetype index, const std::atomic<bool>& isStopped)
    {
        const QByteArray& path = paths_.at(index);
        // What has taken its name while the question was open is not what was meant.
        const bool isMeant = ids_.at(index) && entryId(decodeName(path)) == ids_.at(index);
        const Trash::Result result =
            isMeant ? trash_.put(path, isStopped) : Trash::Result{Trash::Outcome::Gone, 0, {}};
        const std::lock_guard lock(mutex_);
        if (result.error == ECANCELED)
            return;
        if (result.outcome == Trash::Outcome::NoTrash)
            withoutTrash_.append(path);
        else if (result.outcome != Trash::Outcome::Done)
            failures_.append({path, result.outcome, result.error});
        ++next_;
    }

    const Trash trash_{Trash::placesOfUser()};
    const QList<QByteArray> paths_;
    QList<std::optional<EntryId>> ids_;
    mutable std::mutex mutex_;
    QList<QByteArray> withoutTrash_;
    QList<TrashFailure> failures_;
    std::atomic<qsizetype> next_ = 0;
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
    // What is thrown away is on its medium then, which may be slow: this thread does not wait.
    const auto work = std::make_shared<ThrowingAway>(paths);
    if (!asked(texts.toTrash, namesText(paths)))
        return {false, {}};
    runAside(
        texts.movingToTrash, [work](const std::atomic<bool>& isStopped) { work->run(isStopped); },
        [&work, &texts, &paths] {
            return QStringList{filledText(texts.entries, QString::number(work->done()) +
                                                             QStringLiteral(" / ") +
                                                             QString::number(paths.size()))};
        },
        LateEnds::teller(parentsOf(paths)));
    if (!work->failures().isEmpty())
        tell(work->failures());
    const QStringList left = work->left();
    return {true, left + deletedForGood(work->withoutTrash())};
}
