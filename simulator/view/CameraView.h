#pragma once

#include "Scene.h"
#include "ViscaCamera.h"

#include <QFont>
#include <QTimer>
#include <QWidget>

#include <functional>

/**
 * A window with the picture of a simulated camera. Over the picture it shows the protocol, the presets, and a
 * map with the camera's direction within its range.
 *
 * While the camera moves, it draws about 60 pictures a second. While the camera stands still, no timer runs,
 * and it draws only when something arrives.
 */
class CameraView : public QWidget
{
    Q_OBJECT

public:
    /** Returns the camera in its present state. Pass the events that become due meanwhile to take(). */
    using Look = std::function<const ViscaCamera&()>;

    /** The texts over the picture. */
    struct Texts
    {
        /** In degrees with one decimal; positive is right and up. The zoom has magnification and position. */
        QString pan;
        QString tilt;
        QString zoom;
        /** What arrived last, and the last reply since then; empty if there is none. */
        QString command;
        QString commandBytes;
        QString reply;
        QString replyBytes;
        /** The numbers of the stored presets. */
        QString presets;
    };

    explicit CameraView(Look look, QWidget* parent = nullptr);

    QSize sizeHint() const override { return {800, 450}; }

    Texts texts() const;

    /** Where the map shows this direction, given in degrees. The point is in pixels of this window. */
    QPointF mapPointAt(double pan, double tilt) const;

public slots:
    /** Shows an event of the camera, and the motion that may follow. */
    void take(const ViscaCamera::Event& event);

protected:
    void paintEvent(QPaintEvent* event) override;

private slots:
    void showPresent();

private:
    void paintPresetMarks(QPainter& painter, const Projection& projection) const;
    void paintRulers(QPainter& painter, const Projection& projection) const;
    void paintPosition(QPainter& painter, const Texts& shown) const;
    void paintMap(QPainter& painter, const Texts& shown) const;
    void paintProtocol(QPainter& painter, const Texts& shown) const;
    QRectF mapArea() const;

    const Look look;
    const Scene scene;
    const QFont smallFont;
    const QFont numberFont;
    QTimer frameTimer{this};
    ViscaCamera::Position position;
    QMap<int, ViscaCamera::Position> presets;
    Projection::Turn turn{};
    bool on = true;
    bool moving = false;
    ViscaCamera::Event command{};
    ViscaCamera::Event reply{};
};
