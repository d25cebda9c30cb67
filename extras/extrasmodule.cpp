#include "extras/extrasmodule.h"

#include "extras/lateends.h"
#include "extras/operation.h"
#include "extras/operationrun.h"
#include "extras/operationtexts.h"
#include "extras/safetexts.h"
#include "extras/throwaway.h"
#include "extras/trashscreen.h"
#include "extras/unfinished.h"
#include "files/names.h"
#include "files/paths.h"
#include "lang/texts.h"

#include <utility>

namespace
{

/// Whether one of the module's functions is at work.
bool working = false;

class Working
{
public:
    Working()
    {
        working = true;
        SafeTexts::load(languageFileInUse());
    }
    ~Working() { working = false; }
    Working(const Working&) = delete;
    Working& operator=(const Working&) = delete;
};

OperationKind kindOf(ExtrasModule::Kind kind)
{
    switch (kind) {
    case ExtrasModule::Kind::Copy:
        return OperationKind::Copy;
    case ExtrasModule::Kind::Move:
        return OperationKind::Move;
    case ExtrasModule::Kind::Delete:
        break;
    }
    return OperationKind::Delete;
}

/// The folder above, and the folder itself, are no entries.
bool isEntry(const QString& path)
{
    const QString name = lastPart(path);
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") &&
           encodeName(path);
}

QStringList entriesOf(const QStringList& sources)
{
    QStringList entries;
    for (const QString& source : sources) {
        if (isEntry(source))
            entries.append(source);
    }
    return entries;
}

QList<QByteArray> bytesOf(const QStringList& paths)
{
    QList<QByteArray> result;
    for (const QString& path : paths)
        result.append(encodedPath(path));
    return result;
}

class Module final : public ExtrasModule
{
public:
    Outcome run(Kind kind, const QStringList& sources, const QString& folder) override
    {
        const QStringList entries = entriesOf(sources);
        if (working || entries.isEmpty())
            return {false, entries};
        const Working now;
        OperationRequest request;
        request.kind = kindOf(kind);
        request.sources = bytesOf(entries);
        request.target = encodedPath(folder);
        return run(request, entries);
    }

    bool offerUnfinished() override
    {
        if (working)
            return false;
        const Working now;
        return offerUnfinishedOperations();
    }

    Outcome throwAway(const QStringList& sources) override
    {
        const QStringList entries = entriesOf(sources);
        if (working || entries.isEmpty())
            return {false, entries};
        const Working now;
        return throwAwayEntries(bytesOf(entries));
    }

    bool showTrash(const QString& folder) override
    {
        if (working)
            return false;
        const Working now;
        return showTrashScreen(encodedPath(folder), Trash::placesOfUser());
    }

    void setReceiver(QObject* receiver,
                     const std::function<void(const QStringList& folders)>& changed) override
    {
        LateEnds::setReceiver(receiver, changed);
    }

private:
    static Outcome run(const OperationRequest& request, const QStringList& entries)
    {
        OperationRun run(std::make_unique<Operation>(request), titleOf(request.kind));
        const bool isDelete = request.kind == OperationKind::Delete;
        if (!run.survey() || !(isDelete ? run.askToDelete() : run.askBefore()))
            return {false, entries};
        run.work();
        return {true, run.left(entries)};
    }
};

} // namespace

extern "C" Q_DECL_EXPORT ExtrasModule* extras_module()
{
    static Module module;
    return &module;
}
