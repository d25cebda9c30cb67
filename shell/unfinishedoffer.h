#pragma once

#include <QObject>

class FM;

/// Looks, once the first listing is painted, whether operations were cut short, and lets the main
/// window ask about them as soon as nothing else is up. The look costs one call of the system; the
/// module is opened only if there is something to ask.
class UnfinishedOffer : public QObject
{
    Q_OBJECT

public:
    explicit UnfinishedOffer(FM* window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void look();
    void offerWhenFree();

    FM* window_;
    bool isDue_ = false; ///< there is something to ask
};
