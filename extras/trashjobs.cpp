#include "extras/trashjobs.h"

#include "extras/aside.h"
#include "extras/foldercursor.h"
#include "extras/lateends.h"
#include "extras/operationtexts.h"
#include "extras/safetexts.h"
#include "extras/trashremoval.h"
#include "files/entrytexts.h"
#include "lang/texts.h"
#include "widgets/errorbox.h"

#include <atomic>
#include <cerrno>
#include <mutex>
#include <utility>
#include <vector>

namespace
{

QStringList countLines(const QString& text, qint64 count)
{
    return {filledText(text, QString::number(count))};
}

/// What a thread lists, and how far it is.
struct Listing {
    QList<TrashEntry> entries;
    std::atomic<qsizetype> count = 0;
};

/// What a thread deletes. The lock is for what is read before it has ended.
struct Expunging {
    QList<TrashEntry> entries;
    std::atomic<qsizetype> next = 0;
    std::mutex mutex;
    Expunged result;

    void run(const Trash& trash, const std::atomic<bool>& isStopped)
    {
        while (!isStopped && next < entries.size()) {
            const TrashEntry& entry = entries.at(next);
            const Trash::Result done = trash.expunge(entry, isStopped);
            const std::lock_guard lock(mutex);
            if (done.error == ECANCELED)
                return;
            if (done.outcome == Trash::Outcome::Done)
                result.gone.append(entry);
            else if (done.outcome != Trash::Outcome::Gone || entries.size() == 1)
                result.failure = failureOf(entry, done);
            ++next;
        }
    }
};

/// What a thread takes apart. Whether there is anything is known before it begins.
struct Removing {
    std::unique_ptr<TrashRemoval> removal;
    std::atomic<qint64> removed = 0;

    void look(const Trash& trash, QByteArrayList paths)
    {
        std::vector<TrashFolder> trashes = trash.existing();
        for (const TrashFolder& near : trashes)
            paths.removeAll(near.path());
        for (const QByteArray& path : std::as_const(paths)) {
            if (auto far = trash.at(path))
                trashes.push_back(std::move(*far));
        }
        auto found = std::make_unique<TrashRemoval>(trashes);
        if (found->isNeeded())
            removal = std::move(found);
    }
    void run(const std::atomic<bool>& isStopped)
    {
        constexpr int StepMs = 100;
        while (!isStopped && removal->step(StepMs))
            removed = removal->removed();
    }
};

} // namespace

std::optional<QList<TrashEntry>> listAside(const Trash& trash)
{
    const SafeTexts& texts = SafeTexts::instance();
    const auto listing = std::make_shared<Listing>();
    const Aside end = runAside(
        texts.trash,
        [listing, trash](const std::atomic<bool>& isStopped) {
            listing->entries = trash.entries([&listing, &isStopped](qsizetype count) {
                listing->count = count;
                return !isStopped;
            });
        },
        [&listing, &texts] { return countLines(texts.counting, listing->count); });
    return end == Aside::Done ? std::optional(listing->entries) : std::nullopt;
}

std::shared_ptr<const TrashAmount> countAside(const Trash& trash, const QList<TrashEntry>& entries)
{
    const SafeTexts& texts = SafeTexts::instance();
    const auto amount = std::make_shared<TrashAmount>();
    const Aside end = runAside(
        texts.deleting,
        [amount, trash, entries](const std::atomic<bool>& isStopped) {
            amount->add(trash, entries, isStopped);
        },
        [&amount, &texts] {
            return countLines(texts.counting, amount->entries()) +
                   QStringList{wideSizeText(amount->bytes())};
        });
    return end == Aside::Done ? amount : nullptr;
}

Trash::Result restoreAside(const Trash& trash, const TrashEntry& entry, const QByteArray& path,
                           Trash::WhenTaken whenTaken)
{
    const auto result = std::make_shared<Trash::Result>();
    const Aside end = runAside(
        SafeTexts::instance().restore,
        [result, trash, entry, path, whenTaken](const std::atomic<bool>&) {
            *result = trash.restore(entry, path, whenTaken);
        },
        [&entry] { return QStringList{formerNameText(entry)}; },
        LateEnds::teller({parentOf(path)}));
    return end == Aside::GoesOn ? Trash::Result() : *result;
}

bool forgetAside(const Trash& trash, const TrashEntry& entry)
{
    const auto isForgotten = std::make_shared<bool>(false);
    const Aside end = runAside(
        SafeTexts::instance().restore,
        [isForgotten, trash, entry](const std::atomic<bool>&) {
            *isForgotten = trash.forget(entry);
        },
        [&entry] { return QStringList{formerNameText(entry)}; });
    return end != Aside::GoesOn && *isForgotten;
}

Expunged expungeAside(const Trash& trash, const QList<TrashEntry>& entries)
{
    const SafeTexts& texts = SafeTexts::instance();
    const auto expunging = std::make_shared<Expunging>();
    expunging->entries = entries;
    runAside(
        texts.deleting,
        [expunging, trash](const std::atomic<bool>& isStopped) {
            expunging->run(trash, isStopped);
        },
        [&expunging, &texts] {
            return QStringList{
                filledText(texts.entries, QString::number(expunging->next) + QStringLiteral(" / ") +
                                              QString::number(expunging->entries.size()))};
        });
    const std::lock_guard lock(expunging->mutex);
    expunging->result.isWhole = expunging->next == entries.size();
    return expunging->result;
}

void removeAside(const Trash& trash, const QByteArrayList& paths)
{
    const SafeTexts& texts = SafeTexts::instance();
    const auto removing = std::make_shared<Removing>();
    // To look whether there is anything must not seem as if something were deleted.
    const Aside look = runAside(
        texts.trash,
        [removing, trash, paths](const std::atomic<bool>&) { removing->look(trash, paths); },
        [] { return QStringList{LANG_PLEASE_WAIT}; });
    if (look != Aside::Done || removing->removal == nullptr)
        return;
    const Aside end = runAside(
        texts.deleting,
        [removing](const std::atomic<bool>& isStopped) { removing->run(isStopped); },
        [&removing, &texts] { return countLines(texts.entries, removing->removed); });
    if (end != Aside::GoesOn && removing->removal->failures() > 0)
        showError(texts.notAllDeleted + QLatin1Char('\n') +
                  errorText(removing->removal->firstError()));
}

void tidyAside(const Trash& trash)
{
    runAside(
        SafeTexts::instance().trash, [trash](const std::atomic<bool>&) { trash.tidy(); },
        [] { return QStringList{LANG_PLEASE_WAIT}; });
}
