#include "tests/support/drawntexts.h"

#include <QFontMetricsF>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace
{

/// Ends and beginnings are rounded here and there.
constexpr double Slack = 1;

/// Writes down texts and draws nothing.
class TextRecorder : public QPaintEngine
{
public:
    TextRecorder() : QPaintEngine(AllFeatures) {}

    bool begin(QPaintDevice* /*device*/) override { return true; }
    bool end() override { return true; }
    void updateState(const QPaintEngineState& /*state*/) override {}
    void drawPixmap(const QRectF& /*area*/, const QPixmap& /*pixmap*/,
                    const QRectF& /*part*/) override
    {
    }
    void drawPath(const QPainterPath& /*path*/) override {}
    void drawPolygon(const QPointF* /*points*/, int /*count*/, PolygonDrawMode /*mode*/) override {}
    Type type() const override { return User; }

    void drawTextItem(const QPointF& point, const QTextItem& item) override
    {
        const QFontMetricsF metrics(item.font());
        const QRectF own(point.x(), point.y() - metrics.ascent(), item.width(), metrics.height());
        const QRectF area = painter()->deviceTransform().mapRect(own);
        // A text of several scripts comes in pieces.
        if (!texts.isEmpty() && texts.last().area.top() == area.top() &&
            std::abs(texts.last().area.right() - area.left()) < Slack) {
            texts.last().text += item.text();
            texts.last().area |= area;
        } else {
            texts.append({item.text(), area});
        }
    }

    QList<DrawnText> texts;
};

class RecordingDevice : public QPaintDevice
{
public:
    explicit RecordingDevice(QSize size) : size_(size) {}

    QPaintEngine* paintEngine() const override { return &recorder_; }
    const QList<DrawnText>& texts() const { return recorder_.texts; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        constexpr int DotsPerInch = 72;
        switch (metric) {
        case PdmWidth:
        case PdmWidthMM:
            return size_.width();
        case PdmHeight:
        case PdmHeightMM:
            return size_.height();
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return DotsPerInch;
        case PdmDepth:
            return 32;
        case PdmNumColors:
            return 0;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return int(devicePixelRatioFScale());
        default:
            return QPaintDevice::metric(metric);
        }
    }

private:
    QSize size_;
    mutable TextRecorder recorder_;
};

} // namespace

QList<DrawnText> textsDrawnBy(QWidget& widget)
{
    RecordingDevice device(widget.size());
    widget.render(&device);
    return device.texts();
}

QList<DrawnText> textsDrawnOn(QSize size, const std::function<void(QPainter&)>& draw)
{
    RecordingDevice device(size);
    QPainter painter(&device);
    draw(painter);
    painter.end();
    return device.texts();
}

bool isDrawn(const QList<DrawnText>& drawn, const QString& text)
{
    // Some blanks are drawn as others.
    const auto plain = [](QString each) {
        return each.replace(QChar(QChar::Nbsp), QLatin1Char(' '));
    };
    return std::any_of(drawn.begin(), drawn.end(),
                       [&](const DrawnText& each) { return plain(each.text) == plain(text); });
}

QString misplaced(const QList<DrawnText>& drawn, const QRectF& frame)
{
    const QRectF room = frame.adjusted(-Slack, -Slack, Slack, Slack);
    for (qsizetype i = 0; i < drawn.size(); ++i) {
        const DrawnText& one = drawn.at(i);
        if (one.area.left() < room.left() || one.area.right() > room.right())
            return one.text + QStringLiteral(" reaches out");
        for (qsizetype j = 0; j < i; ++j) {
            const QRectF shared = one.area & drawn.at(j).area;
            // Lines may stand close.
            if (shared.width() > Slack && shared.height() > one.area.height() / 2)
                return drawn.at(j).text + QStringLiteral(" is below ") + one.text;
        }
    }
    return {};
}
