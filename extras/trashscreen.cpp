#include "extras/trashscreen.h"

#include "extras/fartrashes.h"
#include "extras/operation.h"
#include "extras/operationrun.h"
#include "extras/operationtexts.h"
#include "extras/safetexts.h"
#include "extras/trashjobs.h"
#include "extras/trashpage.h"
#include "extras/trashwords.h"
#include "extras/waiting.h"
#include "files/names.h"
#include "lang/texts.h"
#include "platform/zapplication.h"
#include "platform/zlistrowpainter.h"
#include "widgets/errorbox.h"
#include "widgets/kwidget.h"

#include <QSet>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace
{

bool confirmed(const QString& title, const QString& text, const char* picture)
{
    return textView->showText(title, text, Qt::AlignHCenter,
                              QStringLiteral("res/img/") + QLatin1String(picture),
                              kWidget::Question) == 1;
}

/// What the user has asked for, about the entry that was highlighted then.
struct Wish {
    int command = TrashPage::Properties;
    TrashEntry entry;
};

/// The screen while it is up.
class TrashVisit
{
public:
    TrashVisit(QByteArray folder, const Trash::Places& places)
        : trash_(places), folder_(std::move(folder)), far_(trash_, [this] { showFar(); })
    {
        // What is asked for while something is being done is about a list that is no longer true.
        QObject::connect(&page_, &TrashPage::commanded, &page_, [this](int command) {
            if (!isBusy_ && !page_.entries().isEmpty())
                wish_ = Wish{command, page_.current()};
        });
        QObject::connect(&page_, &EntryPage::rightPressed, &page_, [this] { leaves_ = true; });
    }

    /// Whether anything outside the trash was changed.
    bool run()
    {
        list();
        if (leaves_)
            return false;
        page_.show();
        removeExpunged();
        tidyAside(trash_);
        while (const auto wish = nextWish()) {
            isBusy_ = true;
            carryOut(*wish);
            isBusy_ = false;
            if (wish->command != TrashPage::Properties)
                list();
        }
        return changed_;
    }

private:
    /// Shows what there is now, and what was far when it last answered, which is asked again. Who
    /// does not want to wait for it leaves.
    void list()
    {
        const auto near = listAside(trash_);
        if (!near) {
            leaves_ = true;
            return;
        }
        near_ = *near;
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
    std::optional<Wish> nextWish()
    {
        isWaiting_ = true;
        ZApplication::waitUntil([this] { return wish_.has_value() || leaves_; });
        isWaiting_ = false;
        return leaves_ ? std::nullopt : std::exchange(wish_, std::nullopt);
    }

    void carryOut(const Wish& wish)
    {
        switch (wish.command) {
        case TrashPage::Restore:
            restore(wish.entry);
            break;
        case TrashPage::DeleteForGood:
            deleteForGood(wish.entry);
            break;
        case TrashPage::Empty:
            empty();
            break;
        default:
            textView->showText(LANG_PROPERTIES, propertiesText(wish.entry), Qt::AlignLeft,
                               QStringLiteral("res/img/props.png"), kWidget::Message);
            break;
        }
    }

    void restore(const TrashEntry& entry)
    {
        const QByteArray path = placeFor(entry);
        if (path.isEmpty())
            return;
        Trash::Result result = restoreAside(trash_, entry, path, Trash::WhenTaken::Tell);
        if (result.outcome == Trash::Outcome::Taken) {
            const auto whenTaken = askWhenTaken(path);
            if (!whenTaken)
                return;
            result = restoreAside(trash_, entry, path, *whenTaken);
        }
        if (result.outcome == Trash::Outcome::Elsewhere)
            bring(entry, result.path);
        else if (result.outcome == Trash::Outcome::Done)
            changed_ = true;
        else
            tell(failureOf(entry, result));
        if (result.outcome == Trash::Outcome::Done)
            far_.drop(entry);
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
        if (forgetAside(trash_, entry))
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
        const auto amount = countAside(trash_, {entry});
        if (amount == nullptr)
            return;
        if (amount->entries() == 0) {
            tell(failureOf(entry, {Trash::Outcome::Gone, 0, {}}));
            return;
        }
        const QString text =
            namesText({entry.pathOrName()}) + QStringLiteral("<hr>") + amountText(entry, *amount);
        if (confirmed(SafeTexts::instance().forGood, text, "delete.png"))
            expunge({entry});
    }

    /// Those that were listed go; what another program has thrown away since stays. What is far,
    /// and may never answer, comes last.
    void empty()
    {
        QList<TrashEntry> entries = page_.entries();
        QSet<QByteArray> trashes;
        for (const TrashEntry& entry : std::as_const(near_))
            trashes.insert(entry.trash);
        std::stable_partition(entries.begin(), entries.end(), [&trashes](const TrashEntry& entry) {
            return trashes.contains(entry.trash);
        });
        const auto amount = countAside(trash_, entries);
        if (amount == nullptr || amount->entries() == 0 ||
            !confirmed(SafeTexts::instance().emptyAsk, amountText(*amount), "delete.png"))
            return;
        expunge(entries);
        tidyAside(trash_);
    }

    void expunge(const QList<TrashEntry>& entries)
    {
        const Expunged expunged = expungeAside(trash_, entries);
        for (const TrashEntry& entry : expunged.gone) {
            far_.drop(entry);
            begun_.insert(entry.trash);
        }
        if (expunged.isWhole && !expunged.gone.isEmpty())
            removeExpunged();
        if (expunged.failure)
            tell(*expunged.failure);
    }

    /// Takes folders apart that are to go, from another time too; of trashes that are far only in
    /// those that something has just been deleted from.
    void removeExpunged()
    {
        const QSet<QByteArray> begun = std::exchange(begun_, {});
        removeAside(trash_, QByteArrayList(begun.begin(), begun.end()));
    }

    static void tell(const TrashFailure& failure)
    {
        showError(shownNameOf(failure.path) + QLatin1Char('\n') + reasonText(failure));
    }

    Trash trash_;
    TrashPage page_;
    QByteArray folder_;
    QList<TrashEntry> near_;
    FarTrashes far_;
    QSet<QByteArray> begun_; ///< paths of trashes that something was deleted from
    bool changed_ = false;
    bool isWaiting_ = false; ///< for the user
    bool isBusy_ = false;    ///< with what the user has asked for
    bool leaves_ = false;
    std::optional<Wish> wish_;
};

} // namespace

bool showTrashScreen(const QByteArray& folder, const Trash::Places& places)
{
    TrashVisit visit(folder, places);
    return visit.run();
}
