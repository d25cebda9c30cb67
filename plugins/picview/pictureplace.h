#pragma once

#include <QPointF>
#include <QRectF>
#include <QSize>

/// Where a picture lies in the area that shows it: fitted into it, filling it, or enlarged around
/// some point. Lengths are pixels of the area or of the picture, as told.
class PicturePlace
{
public:
    /// Pixels of the area that a pixel of the picture takes at most.
    static constexpr double LargestScale = 8;

    void setArea(QSize area);
    /// Another picture, which is fitted, or fills the area if the one before does.
    void setPicture(QSize picture);

    /// Pixels of the area for one of the picture.
    double scale() const;
    bool isFitted() const { return mode_ == Mode::Fitted; }
    bool isFilling() const { return mode_ == Mode::Filling; }
    /// Doubles or halves the scale. False if it cannot be changed further.
    bool zoomIn();
    bool zoomOut();
    void fit();
    /// Covers the area, enlarged or reduced, from the picture's middle.
    void fill();
    /// Scale 1.
    void showOriginalSize();
    /// Moves what is seen by pixels of the area, as far as there is something to be seen. Returns
    /// whether it moved.
    bool scroll(int right, int down);
    /// The whole picture's rectangle in the area; it may reach beyond.
    QRectF target() const;

private:
    enum class Mode { Fitted, Filling, Free };

    double fittedScale() const;
    double fillingScale() const;
    void centre();
    void setScale(double scale);
    void clampCentre();

    QSize area_;
    QSize picture_;
    QPointF centre_; ///< of what is seen, in the picture
    Mode mode_ = Mode::Fitted;
    double scale_ = 1; ///< counts if the mode is Free
};
