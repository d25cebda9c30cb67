#pragma once

#include "platform/zaccessiblebox.h"

#include <QWidget>

class QLabel;
class QScrollArea;
class ZMultiLineEdit;
class ZOptionsMenu;

/// The dialog in which a line of text is typed. It blocks its caller in an event loop until the
/// user confirms or cancels. One serves the whole program.
class TextInput : public QWidget, public ZSpokenBox
{
    Q_OBJECT

public:
    /// `progDir` is where pictures lie; it ends in "/".
    explicit TextInput(const QString& progDir);

    /// Texts of the menu's items and of the two answers; set them before Init().
    QString copyText = QStringLiteral("\t\t\tCopy");
    QString pasteText = QStringLiteral("\t\t\tPaste");
    QString yesText = QStringLiteral("Yes");
    QString noText = QStringLiteral("No");
    /// What the field starts with; afterwards what the user left in it, also when cancelled.
    QString inputText;

    /// Builds what depends on the texts. Call it once.
    void Init();
    /// Shows the dialog; 1 when the user confirmed, 0 when cancelled or when the program ends.
    /// `icon` is a path below `progDir`; empty for none. Virtual as the calls of kWidget are.
    virtual int showText(const QString& title, const QString& prompt, const QString& icon);
    bool isRunning() const { return running; }
    /// A path up to and including its last "/".
    static QString getProgramDir(const QString& path);

    ZBoxWords boxWords() const override;
    void chooseAnswer(int answer) override;

public slots:
    void Copy();
    void Paste();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QString titleHtml(const QString& title, const QString& icon) const;
    void setWords(const QString& title, const QString& prompt);
    void layOut(const QString& page);
    int pageHeight() const;
    void tellSoftKeys(int height);
    void finish(bool confirmed);

    QScrollArea* view_;
    QLabel* label;
    ZMultiLineEdit* edit;
    ZOptionsMenu* menu = nullptr;
    QString keyBarHtml;
    QString progDir;
    bool running = false;
    bool accepted = false;
    bool pressed_ = false; ///< a finger is down that was put down here
};
