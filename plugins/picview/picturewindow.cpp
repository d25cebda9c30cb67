#include "plugins/picview/picturewindow.h"

#include "platform/keymap.h"
#include "plugins/picview/picturearea.h"
#include "plugins/picview/pictureloader.h"
#include "plugins/support/plugintexts.h"

#include <QVBoxLayout>

#include <algorithm>

namespace
{

/// By how much an arrow moves an enlarged picture, pixels.
constexpr int ScrollStep = 60;

enum class Action { Enlarge, Reduce, Fit, Switch, Previous, Next };

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
    {'4', Action::Previous},
    {PhoneKey::PageUp, Action::Previous},
    {'6', Action::Next},
    {PhoneKey::PageDown, Action::Next},
};

} // namespace

PictureWindow::PictureWindow(const QString& path)
    : PluginWindow(QStringLiteral("PicView")),
      pictures_(path),
      area_(new PictureArea(this)),
      loader_(new PictureLoader(this)),
      given_(!path.isEmpty())
{
    contentLayout()->addWidget(area_);
    connect(loader_, &PictureLoader::loaded, this, &PictureWindow::pictureCame);
    // The first time comes when the window is shown.
    connect(area_, &PictureArea::resized, this, [this] {
        if (area_->place().isFitted())
            loadCurrent();
    });
    connect(area_, &PictureArea::tapped, this, [this](bool rightHalf) {
        if (area_->place().isFitted())
            turn(rightHalf ? 1 : -1);
    });
}

void PictureWindow::keyPressed(int code)
{
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
    case Action::Previous:
        turn(-1);
        break;
    case Action::Next:
        turn(1);
        break;
    }
    placeChanged();
}

void PictureWindow::arrow(int code)
{
    const int right = code == PhoneKey::Left ? -1 : code == PhoneKey::Right ? 1 : 0;
    const int down = code == PhoneKey::Up ? -1 : code == PhoneKey::Down ? 1 : 0;
    if (!area_->place().isFitted())
        area_->scroll(right * ScrollStep, down * ScrollStep);
    else if (right != 0)
        turn(right);
}

void PictureWindow::leftSoftKey()
{
    if (!area_->place().isFitted())
        area_->fit();
    else if (area_->place().scale() < 1)
        area_->showOriginalSize();
    else
        area_->zoomIn();
    placeChanged();
}

void PictureWindow::turn(int steps)
{
    if (pictures_.move(steps))
        loadCurrent();
}

void PictureWindow::loadCurrent()
{
    refining_ = false;
    area_->expect();
    loader_->load(given_ ? pictures_.path() : QString(), area_->box());
    if (given_) {
        showTitle(pictures_.name(),
                  QStringLiteral("%1/%2").arg(pictures_.position() + 1).arg(pictures_.count()));
    }
}

void PictureWindow::pictureCame(const Picture& picture)
{
    if (refining_ && picture.problem.isEmpty())
        area_->refine(picture);
    else
        area_->show(picture, pictures_.path());
    refining_ = false;
    placeChanged();
}

void PictureWindow::placeChanged()
{
    if (area_->wantsDetail() && !area_->isLoading()) {
        refining_ = true;
        area_->expect();
        loader_->load(pictures_.path(), QSize());
    }
    const bool fitted = area_->place().isFitted();
    setSoftKeyTexts(!area_->problem().isEmpty() ? QString()
                    : fitted                    ? pluginTexts().zoom
                                                : pluginTexts().fit,
                    pluginTexts().exit);
}
