// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/canvasjob_p.h>

#include <tellarix/core/parallel.h>

#include <QGlobalStatic>
#include <QThreadPool>

#include <mutex>
#include <utility>

namespace Tellarix {
namespace Gui {
namespace Map {

namespace {

// Not the global pool: painters may want its threads for their own work and wait for it.
Q_GLOBAL_STATIC(QThreadPool, canvasThreads)
Core::PoolWork Waiting;

} // namespace

/** What job and thread share; each of them may be gone first. */
class CanvasJob::Task
{
public:
    Task(CanvasJob *job, std::shared_ptr<const BackgroundPainter> painter,
         std::unique_ptr<Projection> projection)
        : _job(job), _painter(std::move(painter)), _projection(std::move(projection))
    {}

    void run()
    {
        if (isCancelled())
            return;

        QImage image(_projection->view().size, QImage::Format_ARGB32_Premultiplied);
        if (!image.isNull())
            _painter->paint(image, *_projection);

        const std::lock_guard<std::mutex> lock(_mutex);
        _image = std::move(image);
        if (_job != nullptr)
            QMetaObject::invokeMethod(_job, "finished", Qt::QueuedConnection);
    }

    QImage takeImage()
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        return std::exchange(_image, QImage());
    }

    void cancel()
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        _job = nullptr;
    }

private:
    bool isCancelled()
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _job == nullptr;
    }

    std::mutex _mutex;
    CanvasJob *_job;
    QImage _image;
    const std::shared_ptr<const BackgroundPainter> _painter;
    const std::unique_ptr<Projection> _projection;
};

CanvasJob::CanvasJob(std::shared_ptr<const BackgroundPainter> painter, const Projection &projection)
    : _view(projection.view()),
      _task(std::make_shared<Task>(this, std::move(painter),
                                   std::unique_ptr<Projection>(projection.clone())))
{
    Waiting.start(canvasThreads(), [task = _task] { task->run(); });
}

CanvasJob::~CanvasJob()
{
    _task->cancel();
}

QImage CanvasJob::takeImage()
{
    return _task->takeImage();
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
