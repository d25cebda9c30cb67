// The about page of the main window.

#include "shell/fm.h"

#include "files/programnames.h"
#include "platform/screenscale.h"
#include "platform/zpicture.h"
#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"

#include <QPainter>

#include <functional>
#include <utility>

namespace
{

/// Shows a picture from its top left corner on. It is drawn when it is first seen.
class PicturePage : public QWidget
{
public:
    PicturePage(QWidget* parent, const QPixmap& picture, std::function<void()> draw)
        : QWidget(parent), picture_(picture), draw_(std::move(draw))
    {
        setFocusPolicy(Qt::StrongFocus);
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        if (picture_.isNull() || picture_.devicePixelRatio() != ScreenScale::density())
            draw_();
        QPainter painter(this);
        painter.fillRect(rect(), Qt::black);
        painter.drawPixmap(0, 0, picture_);
    }

private:
    const QPixmap& picture_;
    std::function<void()> draw_;
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
    const ZPicture logo = ZPicture::fromFile(programDir + QStringLiteral("fm.png"));
    aboutPage_ = new PicturePage(this, aboutPicture_, [this, logo] { drawAbout(logo); });
    aboutPage_->setAccessibleName(aboutTexts_.at(0));
    aboutPage_->setAccessibleDescription(aboutTexts_.mid(1).join(QLatin1Char('\n')).trimmed());
    addTab(aboutPage_, "res/img/about.png");
}

void FM::drawAbout(const ZPicture& logo)
{
    const qreal density = ScreenScale::density();
    aboutPicture_ = QPixmap(QSize(ZScreen::Width, ZScreen::Height) * density);
    aboutPicture_.setDevicePixelRatio(density);
    aboutPicture_.fill(Qt::black);
    QPainter painter(&aboutPicture_);
    drawPicture(painter, {7, 15}, logo.pixmap());
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
