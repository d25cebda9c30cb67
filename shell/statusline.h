#pragma once

#include <QObject>
#include <QString>

class FM;

/// Keeps the status of the main window's soft-key bar true: the folder of the panel that is shown,
/// and the place of the highlighted entry among its entries ("7/202"). Over the back entry there is
/// only their number ("202"), in multi-selection how many are marked instead, and after Copy or
/// Move, until the paste, of how many entries that is to be.
///
/// It looks when the event loop is back, after anything that may change it.
class StatusLine : public QObject
{
    Q_OBJECT

public:
    /// It is the window's, which must be complete but need not be shown.
    explicit StatusLine(FM* window);

private:
    void lookLater();
    void look();
    QString text() const;
    int markedEntries() const;

    FM* window_;
    bool willLook_ = false;
};
