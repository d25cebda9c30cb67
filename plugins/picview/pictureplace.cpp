#include "plugins/picview/pictureplace.h"

#include <algorithm>
#include <cmath>

namespace
{

/// The middle of what is seen along one axis, such that nothing beside the picture is seen if it
/// can be helped.
double clampedCentre(double centre, double picture, double seen)
{
    if (picture <= seen)
        return picture / 2;
    return std::clamp(centre, seen / 2, picture - seen / 2);
}

} // namespace

void PicturePlace::setArea(QSize area)
{
    area_ = area;
    if (mode_ == Mode::Free)
        setScale(scale_);
    else if (isFilling())
        clampCentre();
}

void PicturePlace::setPicture(QSize picture)
{
    picture_ = picture;
    if (mode_ == Mode::Free)
        mode_ = Mode::Fitted;
    centre();
}

double PicturePlace::fittedScale() const
{
    if (picture_.isEmpty())
        return 1;
    return std::min({1.0, double(area_.width()) / picture_.width(),
                     double(area_.height()) / picture_.height()});
}

double PicturePlace::fillingScale() const
{
    if (picture_.isEmpty())
        return 1;
    return std::max(double(area_.width()) / picture_.width(),
                    double(area_.height()) / picture_.height());
}

double PicturePlace::scale() const
{
    switch (mode_) {
    case Mode::Fitted:
        return fittedScale();
    case Mode::Filling:
        return fillingScale();
    default:
        return scale_;
    }
}

bool PicturePlace::zoomIn()
{
    if (picture_.isEmpty() || scale() >= LargestScale)
        return false;
    setScale(std::min(scale() * 2, LargestScale));
    return true;
}

bool PicturePlace::zoomOut()
{
    if (isFitted())
        return false;
    setScale(scale() / 2);
    return true;
}

void PicturePlace::fit()
{
    mode_ = Mode::Fitted;
    centre();
}

void PicturePlace::fill()
{
    mode_ = Mode::Filling;
    centre();
}

void PicturePlace::centre()
{
    centre_ = QPointF(picture_.width() / 2.0, picture_.height() / 2.0);
}

void PicturePlace::showOriginalSize()
{
    if (!picture_.isEmpty())
        setScale(1);
}

bool PicturePlace::scroll(int right, int down)
{
    if (isFitted())
        return false;
    const QPointF before = centre_;
    centre_ += QPointF(right, down) / scale();
    clampCentre();
    return centre_ != before;
}

QRectF PicturePlace::target() const
{
    const QPointF corner = QPointF(area_.width() / 2.0, area_.height() / 2.0) - centre_ * scale();
    // On whole pixels, so that a picture in its own size stays sharp.
    return {std::round(corner.x()), std::round(corner.y()), picture_.width() * scale(),
            picture_.height() * scale()};
}

void PicturePlace::setScale(double scale)
{
    if (scale <= fittedScale()) {
        fit();
        return;
    }
    mode_ = Mode::Free;
    scale_ = scale;
    clampCentre();
}

void PicturePlace::clampCentre()
{
    centre_ = {clampedCentre(centre_.x(), picture_.width(), area_.width() / scale()),
               clampedCentre(centre_.y(), picture_.height(), area_.height() / scale())};
}
