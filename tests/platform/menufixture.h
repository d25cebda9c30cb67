#pragma once

#include "platform/zoptionsmenu.h"

#include <QObject>

#include <functional>
#include <memory>

/// What menu items are connected to: writes down which of its slots ran.
class MenuReceiver : public QObject
{
    Q_OBJECT

public:
    QStringList ran;
    std::function<void()> whenRun = [] {};

public slots:
    void first() { run("first"); }
    void second() { run("second"); }
    void withArgument(int /*number*/) { run("with argument"); }

private:
    void run(const char* name);
};

std::unique_ptr<ZOptionsMenu> makeMenu(int items = 0);
void pressKeys(const QList<int>& keys);
