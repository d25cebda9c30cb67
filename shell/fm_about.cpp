// The about page of the main window.

#include "shell/fm.h"

#include "files/programnames.h"
#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"

#include <QPainter>

namespace
{

/// Shows a picture from its top left corner on.
class PicturePage : public QWidget
{
public:
    PicturePage(QWidget* parent, const QPixmap& picture) : QWidget(parent), picture_(picture)
    {
        setFocusPolicy(Qt::StrongFocus);
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), Qt::black);
        painter.drawPixmap(0, 0, picture_);
    }

private:
    QPixmap picture_;
};

} // namespace

void FM::createAboutPage()
{
    // The last one is a spare that is not drawn.
    aboutTexts_ = {QStringLiteral("Quarn 1.6"),
                   QStringLiteral("FileManager for ROKR E2"),
                   QStringLiteral("The Quarn team"),
                   QStringLiteral("quarn@quarn.example"),
                   QStringLiteral("https://quarn.example"),
                   QString()};
    drawAbout();
    aboutPage_ = new PicturePage(this, aboutPicture_);
    addTab(aboutPage_, "res/img/about.png");
}

void FM::drawAbout()
{
    const qreal density = devicePixelRatio();
    aboutPicture_ = QPixmap(QSize(ZScreen::Width, ZScreen::Height) * density);
    aboutPicture_.setDevicePixelRatio(density);
    QPixmap logo;
    loadPixmap(logo, programDir + QStringLiteral("fm.png"));
    aboutPicture_.fill(Qt::black);
    QPainter painter(&aboutPicture_);
    painter.drawPixmap(7, 15, logo);
    painter.setFont(ZSkinService::font(ProgramNames::Font, 27, 87));
    painter.setPen(QColor(255, 100, 12));
    painter.drawText(70, 40, aboutTexts_.at(0));
    painter.setFont(ZSkinService::font(ProgramNames::Font, 15, 10));
    painter.setPen(Qt::white);
    painter.drawText(70, 60, aboutTexts_.at(1));
    const int rowTops[] = {115, 140, 205};
    for (int i = 0; i < 3; ++i) {
        painter.drawText(0, rowTops[i], ZScreen::Width, 20, Qt::AlignCenter, aboutTexts_.at(2 + i));
    }
}
