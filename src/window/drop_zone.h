#pragma once
// Where a dragged pane lands: the outer quarter of each side of the target pane is that
// side's zone, the middle is the centre (a swap). Rectangles and points are in widget
// coordinates (y grows downwards); "top" is the upper side on screen.

#include <QPointF>
#include <QRectF>

enum class DropZone { Left, Right, Top, Bottom, Center };

// The zone of `rect` under `point`. Ties go to left over right, to the sides over
// bottom, and to bottom or the sides over top; a distance of exactly a quarter is centre.
DropZone dropZone(QPointF point, QRectF rect);

// The area highlighted for a zone: the half of the pane the dropped one will take, or
// the pane inset by 6 for the centre.
QRectF dropZoneRect(DropZone zone, QRectF rect);
