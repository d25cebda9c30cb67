#include "plugins/desktop/desktopwindow.h"

#include "files/paths.h"
#include "platform/shownname.h"
#include "platform/zskinservice.h"
#include "plugins/support/plugintexts.h"

#include <QPainter>
#include <QTextOption>
#include <QVBoxLayout>

namespace
{

/// What a user calls a kind of file: ".pdf".
QString kindOf(const QString& file)
{
    constexpr qsizetype Longest = 16;
    const QString suffix = suffixOf(file);
    if (suffix.isEmpty())
        return pluginTexts().thisFile;
    const QString shown = suffix.size() > Longest ? suffix.left(Longest) + QChar(0x2026) : suffix;
    return QLatin1Char('.') + withMarks(shown);
}

QString problemOf(const QString& file, Handover outcome)
{
    switch (outcome) {
    case Handover::NoFile:
        return file.isEmpty() ? pluginTexts().noFile : pluginTexts().noSuchFile;
    case Handover::Failed:
        return pluginTexts().programFailed.arg(kindOf(file));
    default:
        return pluginTexts().noProgram.arg(kindOf(file));
    }
}

QString adviceFor(Handover outcome)
{
    switch (outcome) {
    case Handover::NoOpener:
        return pluginTexts().noOpener;
    case Handover::NoProgram:
        return pluginTexts().installProgram;
    case Handover::Failed:
        return pluginTexts().anotherWay;
    default:
        return {};
    }
}

} // namespace

class DesktopWindow::Message : public QWidget
{
public:
    explicit Message(DesktopWindow* window) : QWidget(window), window_(*window)
    {
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        constexpr int Margin = 16;
        constexpr int Gap = 8;
        constexpr int ProblemSize = 15;
        constexpr int AdviceSize = 13;
        constexpr int Bold = 75;
        const auto& look = ZSkinService::look(ZSkinService::clsListBox);
        const QFont problem = ZSkinService::font(font().family(), ProblemSize, Bold);
        const QFont advice = ZSkinService::font(font().family(), AdviceSize);
        const QRect area = rect().adjusted(Margin, Margin, -Margin, -Margin);
        const int problemHeight = heightOf(problem, area, window_.problem());
        const int whole = problemHeight + Gap + heightOf(advice, area, window_.advice());
        QPainter painter(this);
        painter.fillRect(rect(), look.background);
        QRect place(area.left(), area.center().y() - whole / 2, area.width(), problemHeight);
        paint(painter, place, problem, look.text, window_.problem());
        place.setTop(place.bottom() + Gap);
        place.setBottom(area.bottom());
        paint(painter, place, advice, look.secondaryText, window_.advice());
    }

private:
    static constexpr int Flags = Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap;

    static int heightOf(const QFont& font, const QRect& area, const QString& text)
    {
        return QFontMetrics(font).boundingRect(area, Flags, text).height();
    }
    static void paint(QPainter& painter, const QRect& place, const QFont& font,
                      const QColor& colour, const QString& text)
    {
        painter.setFont(font);
        painter.setPen(colour);
        painter.drawText(place, Flags, text);
    }

    const DesktopWindow& window_;
};

DesktopWindow::DesktopWindow(const QString& file, Handover outcome)
    : PluginWindow(QStringLiteral("Desktop")),
      problem_(problemOf(file, outcome)),
      advice_(adviceFor(outcome))
{
    contentLayout()->addWidget(new Message(this));
    showTitle(file.isEmpty() ? QStringLiteral("Desktop") : lastPart(file), QString());
}
