#include "platform/zaccessiblebox.h"

#include "platform/shownname.h"
#include "platform/zaccessibleparts.h"
#include "platform/zscreen.h"

#include <QWidget>

namespace
{

QString percentText(int percent)
{
    return QString::number(percent) + QLatin1Char('%');
}

/// Its parts are the texts, the progress if there is any, and, behind them, the answers.
class Spoken final : public ZAccessibleParts
{
public:
    /// One with widgets is filled in, the others are read.
    explicit Spoken(QWidget* box)
        : ZAccessibleParts(box, widgetsIn(*box).isEmpty() ? QAccessible::AlertMessage
                                                          : QAccessible::Dialog)
    {
    }

    QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Name)
            return withMarks(words().title);
        if (kind == QAccessible::Description)
            return withMarks(allTexts().join(QLatin1Char('\n')));
        return ZAccessibleParts::text(kind);
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = ZAccessibleParts::state();
        state.modal = true;
        state.busy = words().isBusy;
        return state;
    }

    QStringList actionNames() const override
    {
        return words().closes && isActive() ? QStringList(pressAction()) : QStringList();
    }

    void doAction(const QString& name) override
    {
        const auto close = [this] {
            if (actionNames().contains(pressAction()))
                choose(0);
        };
        if (name == pressAction())
            QMetaObject::invokeMethod(object(), close, Qt::QueuedConnection);
    }

    int partCount() const override
    {
        const ZBoxWords now = words();
        return int(now.texts.size() + now.answers.size()) + (now.percent < 0 ? 0 : 1);
    }

    QAccessible::Role partRole(int part) const override
    {
        if (part == progressPart())
            return QAccessible::ProgressBar;
        return answerOf(part) < 0 ? QAccessible::StaticText : QAccessible::Button;
    }

    QString partText(int part, QAccessible::Text kind) const override
    {
        const ZBoxWords now = words();
        if (part == progressPart()) {
            if (kind == QAccessible::Name)
                return withMarks(now.title);
            return kind == QAccessible::Value ? percentText(now.percent) : QString();
        }
        if (kind != QAccessible::Name)
            return {};
        const int answer = answerOf(part);
        return withMarks(answer < 0 ? now.texts.value(part) : now.answers.value(answer));
    }

    int partPercent(int part) const override
    {
        return part == progressPart() ? words().percent : -1;
    }

    QAccessible::State partState(int /*part*/) const override { return {}; }

    /// The answers share the box's foot, the texts what is above it.
    QRect partRect(int part) const override
    {
        constexpr int FootHeight = 15;
        const QRect box = widget()->rect();
        const int answers = int(words().answers.size());
        const int answer = answerOf(part);
        if (answer < 0)
            return box.adjusted(0, 0, 0, answers > 0 ? -FootHeight : 0);
        const int width = box.width() / answers;
        return {answer * width, box.bottom() + 1 - FootHeight, width, FootHeight};
    }

    QStringList partActions(int part) const override
    {
        return answerOf(part) >= 0 && isActive() ? QStringList(pressAction()) : QStringList();
    }

    void actOn(int part, const QString& /*action*/) override { choose(answerOf(part)); }

    int partAt(QPoint point) const override
    {
        for (int part = partCount() - 1; part >= 0; --part) {
            if (partRect(part).contains(point))
                return part;
        }
        return -1;
    }

protected:
    QWidgetList otherChildren() const override { return widgetsIn(*object()); }

private:
    static QWidgetList widgetsIn(const QObject& box)
    {
        return box.findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
    }

    ZBoxWords words() const
    {
        const auto* box = as<ZSpokenBox>();
        return box != nullptr ? box->boxWords() : ZBoxWords();
    }

    QStringList allTexts() const
    {
        const ZBoxWords now = words();
        return now.percent < 0 ? now.texts : now.texts + QStringList(percentText(now.percent));
    }

    int progressPart() const
    {
        const ZBoxWords now = words();
        return now.percent < 0 ? -1 : int(now.texts.size());
    }

    int answerOf(int part) const
    {
        const int answer = part - int(allTexts().size());
        return answer < 0 ? -1 : answer;
    }

    bool isActive() const { return ZScreen::instance()->active() == widget(); }

    void choose(int answer)
    {
        if (auto* box = as<ZSpokenBox>())
            box->chooseAnswer(answer);
    }
};

} // namespace

void ZSpokenBox::tellPercent(QWidget* box)
{
    const auto* words = dynamic_cast<ZSpokenBox*>(box);
    if (words != nullptr && words->boxWords().percent >= 0)
        ZAccessible::tellValue(box, int(words->boxWords().texts.size()), words->boxWords().percent);
}

QAccessibleInterface* ZSpokenBox::makeAccessible()
{
    auto* box = dynamic_cast<QWidget*>(this);
    return box != nullptr ? new Spoken(box) : nullptr;
}
