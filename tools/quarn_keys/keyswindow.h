#pragma once

#include "plugins/support/pluginwindow.h"
#include "tools/quarn_keys/keyquestions.h"

#include <QBasicTimer>

#include <optional>

class QStackedWidget;
class QuestionPage;
class ZListBox;

/// Asks for the phone's keys, shows what was given, with these keys in effect already, and writes
/// it into the file of keys.
///
/// While it asks no key has a meaning of its own. One that is held skips the question, and ends all
/// of them when it is held longer; a finger on the page does the same.
class KeysWindow : public PluginWindow
{
    Q_OBJECT

public:
    /// For how long a key is held, milliseconds.
    static constexpr int SkipTime = 1000;
    static constexpr int FinishTime = 2500;

    /// `file` is the path of the file of keys, which need not be there.
    explicit KeysWindow(QString file);
    ~KeysWindow() override;

    const KeyQuestions& questions() const { return questions_; }
    const QuestionPage* page() const { return page_; }
    /// What was given, a row each; shown when the questions are over.
    const ZListBox* list() const { return list_; }
    /// What came of the writing; empty before.
    const QString& result() const { return result_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void leftSoftKey() override;

private:
    class Notice;

    bool isAsking() const { return !questions_.isOver(); }
    bool takeKey(const QKeyEvent& event);
    void begin(const std::optional<GivenKey>& key, quint64 time);
    void release(quint64 time);
    void settle();
    void answer(const GivenKey& key);
    void skipOne();
    void askNext(const QString& message, bool isWarning);
    void showAnswers();
    void useAnswers();
    void updateTexts();

    QString file_;
    KeyQuestions questions_;
    QStackedWidget* pages_;
    QuestionPage* page_;
    ZListBox* list_;
    Notice* notice_;
    QString result_;
    bool isWritten_ = false;

    bool isHeld_ = false;
    std::optional<GivenKey> heldKey_; ///< none if it is a finger
    quint64 heldSince_ = 0;           ///< by the clock of the events, as is the next
    quint64 releasedAt_ = 0;
    int heldFor_ = 0; ///< milliseconds, as far as the timer has counted
    QBasicTimer heldTimer_;
    QBasicTimer releaseTimer_; ///< runs while it is not sure yet that the key has been let go
};
