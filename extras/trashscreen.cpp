#include "extras/trashscreen.h"

#include "extras/aside.h"
#include "extras/fartrashes.h"
#include "extras/operation.h"
#include "extras/operationrun.h"
#include "extras/operationtexts.h"
#include "extras/safetexts.h"
#include "extras/slices.h"
#include "extras/trashpage.h"
#include "extras/trashremoval.h"
#include "extras/trashwords.h"
#include "extras/waiting.h"
#include "files/names.h"
#include "lang/texts.h"
#include "platform/zapplication.h"
#include "platform/zlistrowpainter.h"
#include "widgets/errorbox.h"
#include "widgets/kwidget.h"

#include <QSet>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace
{

bool confirmed(const QString& title, const QString& text, const char* picture)
{
    return textView->showText(title, text, Qt::AlignHCenter,
                              QStringLiteral("res/img/") + QLatin1String(picture),
                              kWidget::Question) == 1;
}

/// The screen while it is up.
class TrashVisit
{
public:
    TrashVisit(QByteArray folder, const Trash::Places& places)
        : trash_(places), folder_(std::move(folder)), far_(trash_, [this] { showFar(); })
    {
        // What is asked for while something goes on is about a list that is no longer true.
        QObject::connect(&page_, &TrashPage::commanded, &page_, [this](int command) {
            if (isWaiting_)
                command_ = command;
        });
        QObject::connect(&page_, &EntryPage::rightPressed, &page_, [this] { leaves_ = true; });
    }

    /// Whether anything outside the trash was changed.
    bool run()
    {
        list();
        page_.show();
        removeExpunged();
        trash_.tidy();
        while (const auto command = nextCommand()) {
            carryOut(*command);
            if (command != TrashPage::Properties)
                list();
        }
        return changed_;
    }

private:
    /// Shows what there is now, and what was far when it last answered, which is asked again.
    void list()
    {
        near_ = trash_.entries();
        page_.setEntries(near_ + far_.entries());
        far_.ask();
    }

    /// Those who have been asked have answered. A list that something is being done with stays.
    void showFar()
    {
        if (isWaiting_)
            page_.setEntries(near_ + far_.entries());
    }

    /// What the user wants next; nothing if it is to leave.
    std::optional<int> nextCommand()
    {
        command_.reset();
        isWaiting_ = true;
        ZApplication::waitUntil([this] { return command_.has_value() || leaves_; });
        isWaiting_ = false;
        return leaves_ ? std::nullopt : command_;
    }

    void carryOut(int command)
    {
        switch (command) {
        case TrashPage::Restore:
            restore(page_.current());
            break;
        case TrashPage::DeleteForGood:
            deleteForGood(page_.current());
            break;
        case TrashPage::Empty:
            empty();
            break;
        default:
            textView->showText(LANG_PROPERTIES, propertiesText(page_.current()), Qt::AlignLeft,
                               QStringLiteral("res/img/props.png"), kWidget::Message);
            break;
        }
    }

    void restore(const TrashEntry& entry)
    {
        const QByteArray path = placeFor(entry);
        if (path.isEmpty())
            return;
        Trash::Result result = restored(entry, path, Trash::WhenTaken::Tell);
        if (result.outcome == Trash::Outcome::Taken) {
            const auto whenTaken = askWhenTaken(path);
            if (!whenTaken)
                return;
            result = restored(entry, path, *whenTaken);
        }
        if (result.outcome == Trash::Outcome::Elsewhere)
            bring(entry, result.path);
        else if (result.outcome == Trash::Outcome::Done)
            changed_ = true;
        else
            tell(entry, result);
        if (result.outcome == Trash::Outcome::Done)
            far_.drop(entry);
    }

    /// The medium is waited for in another thread. What does not come to an end is as if it had:
    /// the list shows what has become of it.
    Trash::Result restored(const TrashEntry& entry, const QByteArray& path,
                           Trash::WhenTaken whenTaken) const
    {
        const auto result = std::make_shared<Trash::Result>();
        const bool isDone = runAside(
            SafeTexts::instance().restore,
            [result, trash = trash_, entry, path, whenTaken](const std::atomic<bool>&) {
                *result = trash.restore(entry, path, whenTaken);
            },
            [&entry] { return QStringList{formerNameText(entry)}; });
        return isDone ? *result : Trash::Result();
    }

    /// Moves an entry to its place on another file system.
    void bring(const TrashEntry& entry, const QByteArray& path)
    {
        const qsizetype slash = path.lastIndexOf('/');
        OperationRequest request;
        request.kind = OperationKind::Move;
        request.sources = {entry.trash + "/files/" + entry.name};
        request.target = path.first(slash + 1);
        request.newName = path.sliced(slash + 1);
        OperationRun run(std::make_unique<Operation>(request), SafeTexts::instance().restore);
        if (!run.survey() || !run.askBefore())
            return;
        run.work();
        changed_ = true;
        if (trash_.forget(entry))
            far_.drop(entry);
    }

    /// Where an entry is to go: where it was, or, if nobody knows that, where the user agrees to.
    QByteArray placeFor(const TrashEntry& entry) const
    {
        if (!entry.path.isEmpty() || folder_.isEmpty())
            return entry.path;
        const SafeTexts& texts = SafeTexts::instance();
        const QString text = texts.unknownPlace + QStringLiteral("<hr>") + texts.restoreHere +
                             QLatin1Char('\n') + namesText({folder_});
        if (!confirmed(texts.restore, text, "warning.png"))
            return {};
        return folder_ + (folder_.endsWith('/') ? "" : "/") + entry.formerName();
    }

    /// What is to become of what is at the place; nothing if the entry is to stay in the trash.
    static std::optional<Trash::WhenTaken> askWhenTaken(const QByteArray& path)
    {
        const SafeTexts& texts = SafeTexts::instance();
        EntryPage page(texts.restore);
        page.setLines({filledText(texts.placeTaken, shownNameOf(path)), shownFolderOf(path)});
        page.setRows({{texts.replace, texts.otherToTrash, {}, {}},
                      {texts.keepBoth, {}, {}, {}},
                      {texts.leaveOut, {}, {}, {}}},
                     true);
        page.setSoftKeys(LANG_SELECT, LANG_BACK);
        PageAnswer answer = answerOn(page);
        if (answer.kind == PageAnswer::Left)
            answer = {PageAnswer::Row, page.currentRow()};
        if (answer.kind != PageAnswer::Row || answer.row > 1)
            return std::nullopt;
        return answer.row == 0 ? Trash::WhenTaken::Replace : Trash::WhenTaken::KeepBoth;
    }

    void deleteForGood(const TrashEntry& entry)
    {
        if (!confirmed(SafeTexts::instance().forGood, namesText({nameOf(entry)}), "delete.png"))
            return;
        const Trash::Result result = expunged(entry);
        if (result.outcome != Trash::Outcome::Done)
            tell(entry, result);
        else
            removeExpunged();
    }

    /// Those that were listed go; what another program has thrown away since stays.
    void empty()
    {
        const SafeTexts& texts = SafeTexts::instance();
        const QList<TrashEntry> entries = page_.entries();
        if (!confirmed(texts.emptyAsk, filledText(texts.entries, QString::number(entries.size())),
                       "delete.png"))
            return;
        qsizetype next = 0;
        std::optional<TrashFailure> failure;
        const bool isDone = runInSlices(
            texts.deleting,
            [&](int) {
                constexpr int AtOnce = 20;
                for (int i = 0; i < AtOnce && next < entries.size(); ++i) {
                    const TrashEntry& entry = entries.at(next++);
                    const Trash::Result result = expunged(entry);
                    if (result.outcome == Trash::Outcome::Failed)
                        failure = TrashFailure{nameOf(entry), result.outcome, result.error};
                }
                return next < entries.size();
            },
            [&] {
                return QStringList{filledText(texts.entries, QString::number(next) +
                                                                 QStringLiteral(" / ") +
                                                                 QString::number(entries.size()))};
            });
        if (isDone)
            removeExpunged();
        trash_.tidy();
        if (failure)
            showError(shownNameOf(failure->path) + QLatin1Char('\n') + reasonText(*failure));
    }

    Trash::Result expunged(const TrashEntry& entry)
    {
        const Trash::Result result = trash_.expunge(entry);
        if (result.outcome == Trash::Outcome::Done) {
            far_.drop(entry);
            begun_.insert(entry.trash);
        }
        return result;
    }

    /// Takes folders apart that are to go, from another time too; of trashes that are far only in
    /// those that something has just been deleted from.
    void removeExpunged()
    {
        const SafeTexts& texts = SafeTexts::instance();
        std::vector<TrashFolder> trashes = trash_.existing();
        for (const TrashFolder& trash : trashes)
            begun_.remove(trash.path());
        for (const QByteArray& path : std::exchange(begun_, {})) {
            if (auto trash = trash_.at(path))
                trashes.push_back(std::move(*trash));
        }
        TrashRemoval removal(trashes);
        if (!removal.isNeeded())
            return;
        const bool isDone = runInSlices(
            texts.deleting, [&removal](int milliseconds) { return removal.step(milliseconds); },
            [&removal, &texts] {
                return QStringList{filledText(texts.entries, QString::number(removal.removed()))};
            });
        if (isDone && removal.failures() > 0)
            showError(texts.notAllDeleted + QLatin1Char('\n') + errorText(removal.firstError()));
    }

    static QByteArray nameOf(const TrashEntry& entry)
    {
        return entry.path.isEmpty() ? entry.name : entry.path;
    }

    static void tell(const TrashEntry& entry, const Trash::Result& result)
    {
        showError(formerNameText(entry) + QLatin1Char('\n') +
                  reasonText(TrashFailure{nameOf(entry), result.outcome, result.error}));
    }

    Trash trash_;
    TrashPage page_;
    QByteArray folder_;
    QList<TrashEntry> near_;
    FarTrashes far_;
    QSet<QByteArray> begun_; ///< paths of trashes that something was deleted from
    bool changed_ = false;
    bool isWaiting_ = false;
    bool leaves_ = false;
    std::optional<int> command_;
};

} // namespace

bool showTrashScreen(const QByteArray& folder, const Trash::Places& places)
{
    TrashVisit visit(folder, places);
    return visit.run();
}
