#pragma once

#include <QObject>

class FM;

/// Tells on which port a program is to be seen that has shown its window over VNC, as soon as
/// nothing else is above the main window. Belongs to that window.
class VncNotice : public QObject
{
    Q_OBJECT

public:
    explicit VncNotice(FM* window);

private:
    void tellWhenFree();

    FM* window_;
    int port_ = 0; ///< still to be told; 0: none
};
