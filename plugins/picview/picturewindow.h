#pragma once

#include "plugins/picview/folderpictures.h"
#include "plugins/support/pluginwindow.h"

class PictureArea;
class PictureLoader;
class SlideShow;
struct Picture;

/// The picture viewer: one picture of a folder, with its place among the others in the title.
///
/// Keys: "3" and "1" enlarge and reduce, "0" fits, "5" and Return switch between fitted and
/// original size, as the left soft key does. "*" fills the screen with the picture and back, "7"
/// and "9" turn it to the left and right. The arrows move what is larger than the screen; else Left
/// and Right go to the previous and next picture, as PageUp and PageDown, "4" and "6" always do.
/// "#" begins a slide show, which any key ends.
class PictureWindow : public PluginWindow
{
    Q_OBJECT

public:
    explicit PictureWindow(const QString& path);

    PictureArea* area() const { return area_; }
    SlideShow* slideShow() const { return slideShow_; }

protected:
    void keyPressed(int code) override;
    void leftSoftKey() override;
    void rightSoftKey() override;

private:
    void connectParts();
    void arrow(int code);
    void step(int steps);
    void turn(int quarterTurns);
    void switchFilling();
    void startSlideShow();
    bool stopSlideShow();
    void load();
    void loadDetail();
    void pictureCame(const Picture& picture);
    void placeChanged();

    FolderPictures pictures_;
    PictureArea* area_;
    PictureLoader* loader_;
    SlideShow* slideShow_;
    bool given_;            ///< a file was given
    bool refining_ = false; ///< what is being loaded is more of the picture that is shown
    int quarterTurns_ = 0;  ///< by which the picture is turned clockwise
};
