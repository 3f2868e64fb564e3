#pragma once

#include "Scene.h"
#include "ViscaCamera.h"

#include <QFont>
#include <QTimer>
#include <QWidget>

#include <functional>

/**
 * A window with the picture of a simulated camera, over it the protocol and the presets, and a map of where
 * it points within its range.
 *
 * While the camera moves it draws 60 pictures a second; while it stands still no timer runs and nothing is
 * drawn unless something arrives.
 */
class CameraView : public QWidget
{
    Q_OBJECT

public:
    /** Brings the camera up to the present and returns it. What happens in it meanwhile is for take(). */
    using Look = std::function<const ViscaCamera&()>;

    /** The texts over the picture. */
    struct Texts
    {
        /** In degrees with one decimal, plus is right and up; the zoom as magnification and as position. */
        QString pan;
        QString tilt;
        QString zoom;
        /** The last thing that arrived and the last reply to it, empty until there is one. */
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

    /** Where the map shows that direction, given in degrees, in pixels of this window. */
    QPointF mapPointAt(double pan, double tilt) const;

public slots:
    /** Shows something that happened in the camera, and any motion that follows from it. */
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
