#pragma once

#include <QStringList>

/// The pictures of a folder in the order in which the file manager lists them, and one's place
/// among them.
class FolderPictures
{
public:
    /// Lists the folder of a file: what has the extension of a picture, and the file itself.
    explicit FolderPictures(const QString& path);

    int count() const { return int(names_.size()); }
    /// From 0.
    int position() const { return position_; }
    QString name() const { return names_.at(position_); }
    QString path() const { return folder_ + name(); }
    /// Moves on by `steps` (backwards if negative), from the last to the first and the other way
    /// round. False if there is no other picture.
    bool move(int steps);

private:
    QString folder_; ///< ends with "/"
    QStringList names_;
    int position_ = 0;
};
