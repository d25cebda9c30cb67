#include "tools/quarn_keys/keyswindow.h"

#include "files/paths.h"
#include "platform/keyline.h"
#include "platform/keymap.h"
#include "platform/zlistbox.h"
#include "platform/ztheme.h"
#include "plugins/support/notice.h"
#include "plugins/support/plugintexts.h"
#include "tools/quarn_keys/askedkeys.h"
#include "tools/quarn_keys/keyfile.h"
#include "tools/quarn_keys/questionpage.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QStackedWidget>
#include <QTimerEvent>
#include <QVBoxLayout>

#include <utility>

namespace
{

constexpr unsigned ListClass = 40;
constexpr int TextRegion = 2;
// Milliseconds: from one look at a held key to the next; between the release and the press of a key
// that is repeated, by the clock of the events; and until the press is there.
constexpr int HeldStep = 50;
constexpr quint64 RepeatGap = 2;
constexpr int ReleaseWait = 30;

QString rowText(int code, const GivenKey& key)
{
    return nameOfAsked(code) + QStringLiteral(": ") + key.shown();
}

} // namespace

/// Says what came of the writing.
class KeysWindow::Notice : public QWidget
{
public:
    explicit Notice(QWidget* parent) : QWidget(parent)
    {
        setAttribute(Qt::WA_OpaquePaintEvent);
        setFocusPolicy(Qt::StrongFocus);
    }
    void setText(const QString& text)
    {
        text_ = text;
        setAccessibleName(text);
        update();
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), ZTheme::current().ground);
        painter.setPen(ZTheme::current().text);
        paintNotice(painter, rect(), text_);
    }

private:
    QString text_;
};

KeysWindow::KeysWindow(QString file)
    : PluginWindow(pluginTexts().keysTitle),
      file_(std::move(file)),
      questions_(askedKeys()),
      pages_(new QStackedWidget(this)),
      page_(new QuestionPage(pages_)),
      list_(new ZListBox(QStringLiteral("%M"), pages_, 0, ListClass)),
      notice_(new Notice(pages_))
{
    contentLayout()->addWidget(pages_);
    for (QWidget* page : std::initializer_list<QWidget*>{page_, list_, notice_})
        pages_->addWidget(page);
    for (const bool highlighted : {false, true})
        list_->setItemFont(TextRegion, font(), highlighted);
    connect(page_, &QuestionPage::touched, this, [this](bool down, quint64 time) {
        if (down)
            begin(std::nullopt, time);
        else
            release(time);
    });
    // Before the one of the soft keys, which would take theirs.
    qApp->installEventFilter(this);
    page_->setFocus();
    askNext(QString(), false);
}

KeysWindow::~KeysWindow() = default;

bool KeysWindow::eventFilter(QObject* watched, QEvent* event)
{
    const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease;
    if (isAsking() && isKey && (watched == this || watched == page_))
        return takeKey(static_cast<const QKeyEvent&>(*event));
    return PluginWindow::eventFilter(watched, event);
}

/// What counts is the key that went down last: with Shift it is the other one.
bool KeysWindow::takeKey(const QKeyEvent& event)
{
    if (event.isAutoRepeat())
        return true;
    if (event.type() == QEvent::KeyRelease) {
        release(event.timestamp());
        return true;
    }
    const GivenKey key = GivenKey::of(event);
    const bool isReleased = releaseTimer_.isActive();
    releaseTimer_.stop();
    if (isReleased && heldKey_ == key && event.timestamp() - releasedAt_ <= RepeatGap)
        return true;
    if (isReleased)
        settle();
    if (isAsking())
        begin(key, event.timestamp());
    return true;
}

void KeysWindow::begin(const std::optional<GivenKey>& key, quint64 time)
{
    isHeld_ = true;
    heldKey_ = key;
    heldSince_ = time;
    heldFor_ = 0;
    heldTimer_.start(HeldStep, this);
}

/// A keyboard that repeats a held key releases and presses it, and the toolkit does not always see
/// that as what it is: what may follow at once is waited for.
void KeysWindow::release(quint64 time)
{
    if (!isHeld_)
        return;
    releasedAt_ = time;
    releaseTimer_.start(ReleaseWait, this);
}

void KeysWindow::settle()
{
    if (!std::exchange(isHeld_, false))
        return;
    heldTimer_.stop();
    page_->showHeld(-1);
    if (releasedAt_ - heldSince_ >= quint64(SkipTime))
        skipOne();
    else if (heldKey_)
        answer(*heldKey_);
}

void KeysWindow::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == releaseTimer_.timerId()) {
        releaseTimer_.stop();
        settle();
        return;
    }
    if (event->timerId() != heldTimer_.timerId()) {
        PluginWindow::timerEvent(event);
        return;
    }
    if (releaseTimer_.isActive())
        return;
    heldFor_ += HeldStep;
    page_->showHeld(double(heldFor_) / FinishTime);
    if (heldFor_ < FinishTime)
        return;
    isHeld_ = false;
    heldTimer_.stop();
    page_->showHeld(-1);
    questions_.skipAll();
    showAnswers();
}

void KeysWindow::answer(const GivenKey& key)
{
    const int code = questions_.current();
    switch (questions_.answer(key)) {
    case KeyQuestions::Given:
        askNext(rowText(code, key), false);
        break;
    case KeyQuestions::TakenNow:
        askNext(pluginTexts().keyTaken.arg(key.shown(), nameOfAsked(questions_.takenFor())), true);
        break;
    case KeyQuestions::Unusable:
        askNext(pluginTexts().keyUnusable, true);
        break;
    }
}

void KeysWindow::skipOne()
{
    questions_.skip();
    askNext(QString(), false);
}

void KeysWindow::askNext(const QString& message, bool isWarning)
{
    if (!isAsking()) {
        showAnswers();
        return;
    }
    QuestionPage::Question question{
        questions_.current(), nameOfAsked(questions_.current()), {}, message, isWarning};
    for (const KeyAnswer& given : questions_.answers())
        question.given.append(given.code);
    page_->ask(question);
    updateTexts();
}

void KeysWindow::showAnswers()
{
    for (const KeyAnswer& given : questions_.answers()) {
        auto* row = new ZListBoxItem(list_, QStringLiteral("%M"));
        row->appendSubItem(1, rowText(given.code, given.key), false);
        list_->insertItem(row);
    }
    list_->setEmptyText(pluginTexts().noKeysGiven);
    list_->setCurrentItem(0);
    pages_->setCurrentWidget(list_);
    list_->setFocus();
    useAnswers();
    updateTexts();
}

/// Who cannot come to "Save" with them sees that before they are written.
void KeysWindow::useAnswers()
{
    KeyMap map;
    for (const QByteArray& line : keyFileWith(readKeyFile(file_), questions_.answers()).split('\n'))
        map.add(KeyLine::of(QString::fromUtf8(line)));
    KeyMap::instance() = map;
}

void KeysWindow::leftSoftKey()
{
    if (isAsking() || isWritten_ || questions_.answers().isEmpty())
        return;
    const int error = writeKeyFile(file_, questions_.answers());
    isWritten_ = error == 0;
    result_ = isWritten_ ? pluginTexts().keysSaved
                         : pluginTexts().keysNotSaved.arg(lastPart(file_), qt_error_string(error));
    notice_->setText(result_);
    pages_->setCurrentWidget(notice_);
    notice_->setFocus();
    updateTexts();
}

void KeysWindow::updateTexts()
{
    const PluginTexts& texts = pluginTexts();
    if (isAsking()) {
        showTitle(texts.keysTitle,
                  QStringLiteral("%1/%2").arg(questions_.place()).arg(questions_.count()));
        setSoftKeyTexts(QString(), QString());
        return;
    }
    showTitle(texts.keysTitle, QString());
    const bool canSave = !isWritten_ && !questions_.answers().isEmpty();
    const QString& save = result_.isEmpty() ? texts.save : texts.again;
    setSoftKeyTexts(canSave ? save : QString(), texts.exit);
}
