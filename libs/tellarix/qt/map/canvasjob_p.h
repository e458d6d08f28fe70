// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/map/backgroundpainter.h>
#include <tellarix/qt/map/projection.h>

#include <QImage>
#include <QObject>

#include <memory>

namespace Tellarix {
namespace Gui {
namespace Map {

/** Paints the background of one view in another thread. A job that is deleted drops its result. */
class CanvasJob : public QObject
{
    Q_OBJECT

public:
    CanvasJob(std::shared_ptr<const BackgroundPainter> painter, const Projection &projection);
    ~CanvasJob() override;

    const View &view() const { return _view; }
    /** Once, after finished(). */
    QImage takeImage();

signals:
    void finished();

private:
    class Task;

    View _view;
    std::shared_ptr<Task> _task;
};

} // namespace Map
} // namespace Gui
} // namespace Tellarix
