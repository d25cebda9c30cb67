#include "sharing/sharingmodule.h"

#include "lang/texts.h"
#include "platform/zapplication.h"
#include "platform/zscreen.h"
#include "sharing/sharetexts.h"
#include "sharing/sharing.h"

#include <QDeadlineTimer>
#include <QPointer>
#include <QTimer>

namespace
{

/// In which a service that is not even there shows itself as such.
constexpr int AnswerMilliseconds = 2500;

/// Whether a request is being answered, or going on.
bool answering = false;
QPointer<Sharing> current;

class Answering
{
public:
    Answering() { answering = true; }
    ~Answering() { answering = false; }
    Answering(const Answering&) = delete;
    Answering& operator=(const Answering&) = delete;

private:
    const ZScreen::MainInputPause pause_;
};

/// Waits in the event loop until it has opened, its signal `failed` comes or the deadline passes.
template<typename Service, typename Failed>
bool opens(Service& service, Failed failed, const QDeadlineTimer& deadline)
{
    bool over = false;
    QObject receiver;
    QObject::connect(&service, failed, &receiver, [&over] { over = true; });
    QTimer::singleShot(int(deadline.remainingTime()), &receiver, [&over] { over = true; });
    service.open();
    return ZApplication::waitUntil([&] { return over || service.isOpen(); }) && service.isOpen();
}

} // namespace

extern "C" Q_DECL_EXPORT bool sharing_module(const SHARE_Tool::OBJECT_INFO& info,
                                             const QString& path)
{
    if (answering || (current && !current->isOver()))
        return false;
    const Answering now;
    const QDeadlineTimer deadline(AnswerMilliseconds);
    auto push = std::make_unique<ObexPush>(path);
    auto devices = std::make_unique<BluezDevices>();
    if (!opens(*push, &ObexPush::finished, deadline) ||
        !opens(*devices, &BluezDevices::lost, deadline) || !push->isOpen())
        return false;
    ShareTexts::load(languageFileInUse());
    const qsizetype slash = info.objectName.startsWith(QLatin1Char('/')) ? 1 : 0;
    current = new Sharing(std::move(devices), std::move(push), info.objectName.mid(slash));
    return true;
}
