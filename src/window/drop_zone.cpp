#include "window/drop_zone.h"

DropZone dropZone(QPointF point, QRectF rect)
{
    const double width = rect.width() <= 1 ? 1 : rect.width();
    const double height = rect.height() <= 1 ? 1 : rect.height();
    // Measured upwards from the bottom edge, so each distance reads as its side.
    const double fx = (point.x() - rect.left()) / width;
    const double fy = (rect.bottom() - point.y()) / height;
    const double left = fx, right = 1 - fx, bottom = fy, top = 1 - fy;

    const double h = right < left ? right : left;
    const double m = bottom < h ? bottom : h;
    DropZone nearest;
    double distance;
    if (top < m) {
        nearest = DropZone::Top;
        distance = top;
    } else if (bottom < h) {
        nearest = DropZone::Bottom;
        distance = bottom;
    } else if (right < left) {
        nearest = DropZone::Right;
        distance = right;
    } else {
        nearest = DropZone::Left;
        distance = left;
    }
    return distance < 0.25 ? nearest : DropZone::Center;
}

QRectF dropZoneRect(DropZone zone, QRectF rect)
{
    const double halfW = rect.width() / 2, halfH = rect.height() / 2;
    switch (zone) {
    case DropZone::Left: return {rect.left(), rect.top(), halfW, rect.height()};
    case DropZone::Right: return {rect.center().x(), rect.top(), halfW, rect.height()};
    case DropZone::Top: return {rect.left(), rect.top(), rect.width(), halfH};
    case DropZone::Bottom: return {rect.left(), rect.center().y(), rect.width(), halfH};
    case DropZone::Center: break;
    }
    return rect.adjusted(6, 6, -6, -6);
}
