#include "plugins/picview/picturewindow.h"

#include "platform/keymap.h"
#include "plugins/picview/picturearea.h"
#include "plugins/picview/pictureloader.h"
#include "plugins/picview/slideshow.h"
#include "plugins/support/plugintexts.h"

#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace
{

/// By how much an arrow moves an enlarged picture, pixels.
constexpr int ScrollStep = 60;

enum class Action {
    Enlarge,
    Reduce,
    Fit,
    Switch,
    Fill,
    TurnLeft,
    TurnRight,
    Previous,
    Next,
    SlideShow,
};

struct KeyAction {
    int code;
    Action action;
};

constexpr KeyAction KeyActions[] = {
    {'3', Action::Enlarge},
    {'+', Action::Enlarge},
    {'1', Action::Reduce},
    {'-', Action::Reduce},
    {'0', Action::Fit},
    {'5', Action::Switch},
    {PhoneKey::Return, Action::Switch},
    {PhoneKey::Enter, Action::Switch},
    {'*', Action::Fill},
    {'7', Action::TurnLeft},
    {'9', Action::TurnRight},
    {'4', Action::Previous},
    {PhoneKey::PageUp, Action::Previous},
    {'6', Action::Next},
    {PhoneKey::PageDown, Action::Next},
    {'#', Action::SlideShow},
};

} // namespace

PictureWindow::PictureWindow(const QString& path)
    : PluginWindow(QStringLiteral("PicView")),
      pictures_(path),
      area_(new PictureArea(this)),
      loader_(new PictureLoader(this)),
      slideShow_(new SlideShow(this)),
      given_(!path.isEmpty())
{
    contentLayout()->addWidget(area_);
    connectParts();
}

void PictureWindow::connectParts()
{
    connect(loader_, &PictureLoader::loaded, this, &PictureWindow::pictureCame);
    // The first time comes when the window is shown.
    connect(area_, &PictureArea::resized, this, [this] {
        if (area_->place().isFitted() || area_->place().isFilling())
            load();
    });
    connect(area_, &PictureArea::tapped, this, [this](bool rightHalf) {
        if (!stopSlideShow() && area_->place().isFitted())
            step(rightHalf ? 1 : -1);
    });
    connect(slideShow_, &SlideShow::nextWanted, this, [this] { step(1); });
    connect(slideShow_, &SlideShow::ended, this,
            [this] { setWholeScreen(area_->place().isFilling()); });
}

void PictureWindow::keyPressed(int code)
{
    const bool wasRunning = stopSlideShow();
    if (PhoneKey::isArrow(code)) {
        arrow(code);
        return;
    }
    const auto* known = std::find_if(std::begin(KeyActions), std::end(KeyActions),
                                     [code](const KeyAction& key) { return key.code == code; });
    if (known == std::end(KeyActions)) {
        PluginWindow::keyPressed(code);
        return;
    }
    switch (known->action) {
    case Action::Enlarge:
        area_->zoomIn();
        break;
    case Action::Reduce:
        area_->zoomOut();
        break;
    case Action::Fit:
        area_->fit();
        break;
    case Action::Switch:
        leftSoftKey();
        break;
    case Action::Fill:
        switchFilling();
        break;
    case Action::TurnLeft:
        turn(-1);
        break;
    case Action::TurnRight:
        turn(1);
        break;
    case Action::Previous:
        step(-1);
        break;
    case Action::Next:
        step(1);
        break;
    case Action::SlideShow:
        if (!wasRunning)
            startSlideShow();
        break;
    }
    placeChanged();
}

void PictureWindow::arrow(int code)
{
    const int right = code == PhoneKey::Left ? -1 : code == PhoneKey::Right ? 1 : 0;
    const int down = code == PhoneKey::Up ? -1 : code == PhoneKey::Down ? 1 : 0;
    const PicturePlace& place = area_->place();
    const bool moved = area_->scroll(right * ScrollStep, down * ScrollStep);
    // One who looks closely at a place is not led away from it.
    if (!moved && right != 0 && (place.isFitted() || place.isFilling()))
        step(right);
}

void PictureWindow::leftSoftKey()
{
    if (stopSlideShow())
        return;
    if (!area_->place().isFitted())
        area_->fit();
    else if (area_->place().scale() < 1)
        area_->showOriginalSize();
    else
        area_->zoomIn();
    placeChanged();
}

void PictureWindow::rightSoftKey()
{
    if (stopSlideShow())
        return;
    // Without the bar nothing says that the key would end the program.
    if (isWholeScreen())
        switchFilling();
    else
        PluginWindow::rightSoftKey();
}

void PictureWindow::step(int steps)
{
    if (!pictures_.move(steps))
        return;
    quarterTurns_ = 0;
    load();
}

void PictureWindow::turn(int quarterTurns)
{
    constexpr int WholeTurn = 4;
    quarterTurns_ = (quarterTurns_ + quarterTurns + WholeTurn) % WholeTurn;
    if (area_->isLoading() && !refining_) {
        load();
        return;
    }
    area_->turn(quarterTurns);
    // What is on its way was turned otherwise.
    if (std::exchange(refining_, false))
        loadDetail();
}

void PictureWindow::switchFilling()
{
    const bool fills = !isWholeScreen();
    if (fills)
        area_->fill();
    else
        area_->fit();
    setWholeScreen(fills);
}

void PictureWindow::startSlideShow()
{
    if (pictures_.count() < 2) {
        area_->say(pluginTexts().onlyPicture);
        return;
    }
    setWholeScreen(true);
    slideShow_->start();
    area_->say(pluginTexts().slideShow);
}

/// Whether there was one.
bool PictureWindow::stopSlideShow()
{
    if (!slideShow_->isRunning())
        return false;
    slideShow_->stop();
    area_->say(QString());
    setWholeScreen(area_->place().isFilling());
    return true;
}

void PictureWindow::load()
{
    refining_ = false;
    area_->expect();
    loader_->load(given_ ? pictures_.path() : QString(),
                  {area_->box(), area_->place().isFilling(), quarterTurns_});
    if (given_) {
        showTitle(pictures_.name(),
                  QStringLiteral("%1/%2").arg(pictures_.position() + 1).arg(pictures_.count()));
    }
}

void PictureWindow::loadDetail()
{
    refining_ = true;
    area_->expect();
    loader_->load(pictures_.path(), {QSize(), false, quarterTurns_});
}

void PictureWindow::pictureCame(const Picture& picture)
{
    if (refining_ && picture.problem.isEmpty())
        area_->refine(picture);
    else
        area_->show(picture, pictures_.path(), quarterTurns_);
    if (!refining_)
        slideShow_->pictureCame(picture.problem.isEmpty(), pictures_.count());
    refining_ = false;
    placeChanged();
}

void PictureWindow::placeChanged()
{
    if (area_->wantsDetail() && !area_->isLoading())
        loadDetail();
    const bool fitted = area_->place().isFitted();
    setSoftKeyTexts(!area_->problem().isEmpty() ? QString()
                    : fitted                    ? pluginTexts().zoom
                                                : pluginTexts().fit,
                    pluginTexts().exit);
}
