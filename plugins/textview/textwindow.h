#pragma once

#include "plugins/support/pluginwindow.h"
#include "plugins/textview/textfile.h"

class TextPane;

/// The text viewer: a page of a file, how far it reaches in the title. The left soft key and "0"
/// switch between broken and long lines.
class TextWindow : public PluginWindow
{
    Q_OBJECT

public:
    explicit TextWindow(const QString& path);

    TextPane* pane() const { return pane_; }

protected:
    void keyPressed(int code) override;
    void leftSoftKey() override;

private:
    void updateTexts();

    QString name_;
    TextFile file_;
    TextPane* pane_ = nullptr;
    bool opened_ = false;
};
