#pragma once

#include <QWidget>

class QVBoxLayout;
class ZSoftKey;

/// A main widget: a header with a title, a content area below it and a soft-key bar at the bottom.
/// It fills the screen. Full-screen mode takes the header away and gives its room to the content.
class ZMainWidget : public QWidget
{
    Q_OBJECT

public:
    /// How the header looks.
    enum HeaderType {
        NoHeader = 0,       ///< none
        TitleLeft = 1,      ///< the title at the left
        TitleCentred = 2,   ///< the title in the middle
        TitleUnderlined = 3 ///< the title in the middle on an accent line
    };

    ZMainWidget(int headerType, QWidget* parent, const char* name, Qt::WindowFlags flags);

    void setMainWidgetTitle(const QString& title);
    QString mainWidgetTitle() const;
    /// A number that is none of HeaderType gives TitleUnderlined.
    void setHeaderType(int type);
    int headerType() const;
    void fullScreenModeChanged(bool on);
    bool isFullScreenMode() const;
    /// The font of the title, made from the widget's.
    static QFont titleFont(const QFont& font);

    /// The content's vertical layout; widgets added to it belong to this widget.
    QVBoxLayout* contentLayout() const;

private:
    void updateHeader();

    class Header;
    Header* header_;
    QVBoxLayout* outer_;
    QVBoxLayout* content_;
    bool fullScreen_ = false;

    friend class ZKbMainWidget;
};

/// A main widget driven by keys: while it is the active widget of the screen, the soft keys
/// (PhoneKey::SoftLeft and SoftRight) work its soft-key bar wherever the focus is. Needs to be
/// installed as an event filter on the application.
class ZKbMainWidget : public ZMainWidget
{
    Q_OBJECT

public:
    ZKbMainWidget(int headerType, QWidget* parent, const char* name, Qt::WindowFlags flags);

    /// Puts the bar at the bottom and takes ownership of it.
    void setSoftKey(ZSoftKey* softKey);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    ZSoftKey* softKey_ = nullptr;
};
