#pragma once

#include <QList>
#include <QString>
#include <QWidget>

/// Asks for one of the phone's keys, and says what came of the last one.
class QuestionPage : public QWidget
{
    Q_OBJECT

public:
    struct Question {
        int code = 0; ///< of the key that is asked for
        QString name; ///< and what a user calls it
        QList<int> given;
        QString message; ///< about what was pressed last
        bool isWarning = false;
    };

    explicit QuestionPage(QWidget* parent);

    void ask(const Question& question);
    const Question& question() const { return question_; }
    /// How much of the time for which a key is to be held to end the questions is over, from 0 on;
    /// negative while none is held.
    void showHeld(double share);

    /// The part of that time after which letting go skips the question.
    static constexpr double SkipShare = 0.4;

signals:
    /// A finger went down on the page, or up.
    void touched(bool down, quint64 time);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void paintMessage(QPainter& painter);
    void paintHint(QPainter& painter);

    Question question_;
    double held_ = -1;
};
