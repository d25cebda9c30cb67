#pragma once

#include "plugins/picview/folderpictures.h"
#include "plugins/support/pluginwindow.h"

class PictureArea;
class PictureLoader;
struct Picture;

/// The picture viewer: one picture of a folder, with its place among the others in the title.
///
/// Keys: "3" and "1" enlarge and reduce, "0" fits, "5" and Return switch between fitted and
/// original size, as the left soft key does. The arrows move an enlarged picture; else Left and
/// Right go to the previous and next one, as PageUp and PageDown, "4" and "6" always do.
class PictureWindow : public PluginWindow
{
    Q_OBJECT

public:
    explicit PictureWindow(const QString& path);

    PictureArea* area() const { return area_; }

protected:
    void keyPressed(int code) override;
    void leftSoftKey() override;

private:
    void arrow(int code);
    void turn(int steps);
    void loadCurrent();
    void pictureCame(const Picture& picture);
    void placeChanged();

    FolderPictures pictures_;
    PictureArea* area_;
    PictureLoader* loader_;
    bool given_;            ///< a file was given
    bool refining_ = false; ///< what is being loaded is more of the picture that is shown
};
