#pragma once

#include "platform/zmainwidget.h"

#include <QLatin1String>

/// The window of a plugin: a title, what it shows, and the soft-key bar. The right soft key ends
/// the program, "*" toggles full-screen mode.
class PluginWindow : public ZKbMainWidget
{
    Q_OBJECT

public:
    explicit PluginWindow(const QString& title);
    ~PluginWindow() override;

    /// The texts over the soft keys.
    void setSoftKeyTexts(const QString& left, const QString& right);

    /// Puts a name and what is to say about it into the title; a long name loses its middle.
    void showTitle(const QString& name, const QString& detail);

    /// Gives the title's and the bar's room to the content, or takes it back. The soft keys work as
    /// ever.
    void setWholeScreen(bool on);
    bool isWholeScreen() const { return wholeScreen_; }

public slots:
    /// Ends the program; what the window manager's request to close does, too.
    virtual void end();

protected:
    void keyPressEvent(QKeyEvent* event) final;
    /// A key of the phone that none of the widgets in the window has taken, repeated presses
    /// included. `code` is a PhoneKey::Code or a character.
    virtual void keyPressed(int code);
    /// The left soft key.
    virtual void leftSoftKey();
    /// The right soft key: ends the program.
    virtual void rightSoftKey();

private:
    ZSoftKey* softKey_;
    bool wholeScreen_ = false;
};
