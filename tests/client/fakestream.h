// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/recordstream.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/records/typedarray.h>

#include <QString>
#include <QStringList>

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

/** A source made for a test, which "fake://NAME" leads to; what it holds is changed under its
 *  mutex. */
struct FakeSource
{
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Tellarix::RecordPtr> records;
    bool isLive{false}; /**< waits for more records behind the last one */
    bool ignoresWindows{false};
    std::string openError;
    std::string fault; /**< told behind the last record */
    int opened{0};
    size_t taken{0};   /**< records that were given out, the last time it was opened */
    QStringList asked; /**< "ID START END" in seconds, as asked for the last time */

    void change(const std::function<void(FakeSource &)> &action)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        action(*this);
        changed.notify_all();
    }

    static std::shared_ptr<FakeSource> Named(const std::string &name)
    {
        static std::mutex namesMutex;
        static std::map<std::string, std::shared_ptr<FakeSource>> sources;
        const std::lock_guard<std::mutex> lock(namesMutex);
        std::shared_ptr<FakeSource> &source = sources[name];
        if (!source)
            source = std::make_shared<FakeSource>();
        return source;
    }

    /** A new source in place of the one of that name. */
    static std::shared_ptr<FakeSource> Make(const std::string &name)
    {
        const std::shared_ptr<FakeSource> source = Named(name);
        source->change([](FakeSource &old) {
            old.records.clear();
            old.isLive = old.ignoresWindows = false;
            old.openError = old.fault = std::string();
            old.opened = 0;
            old.taken = 0;
            old.asked.clear();
        });
        return source;
    }
};

class FakeStream : public Tellarix::IO::RecordStream
{
public:
    bool setSource(const std::string &source) override
    {
        _source = FakeSource::Named(source);
        return source != "refused" || fail("refused");
    }

    bool isLive() const override
    {
        const std::lock_guard<std::mutex> lock(_source->mutex);
        return _source->isLive;
    }

    bool open() override
    {
        const std::lock_guard<std::mutex> lock(_source->mutex);
        _closed = false;
        _next = 0;
        ++_source->opened;
        _source->asked.clear();
        for (const Request &request : requests()) {
            const auto &window = windowOf(request);
            _source->asked << QStringLiteral("%1.%2.%3.%4 %5 %6")
                                  .arg(request.network.c_str(), request.station.c_str(),
                                       request.location.c_str(), request.channel.c_str())
                                  .arg(window.startTime().toDouble(), 0, 'f', 0)
                                  .arg(window.endTime().toDouble(), 0, 'f', 0);
        }
        return _source->openError.empty() || fail(_source->openError);
    }

    Tellarix::RecordPtr next() override
    {
        std::unique_lock<std::mutex> lock(_source->mutex);
        for (;;) {
            _source->changed.wait(lock, [this] {
                return _closed || _next < _source->records.size() || !_source->isLive;
            });
            if (_closed)
                return nullptr;
            if (_next == _source->records.size())
                break;
            const Tellarix::RecordPtr record = _source->records[_next++];
            _source->taken = _next;
            if (_source->ignoresWindows || isRequested(*record->codes(), record->timeWindow()))
                return record;
        }
        const std::string fault = std::exchange(_source->fault, std::string());
        lock.unlock();
        if (!fault.empty())
            report({Tellarix::IO::StreamMessage::Severity::Fault, "fake", -1, fault});
        return nullptr;
    }

    void close() override
    {
        const std::lock_guard<std::mutex> lock(_source->mutex);
        _closed = true;
        _source->changed.notify_all();
    }

    std::string originName() const override { return "fake"; }

private:
    std::shared_ptr<FakeSource> _source;
    size_t _next{0};
    bool _closed{false};
};

inline const Tellarix::IO::RecordStreamScheme fakeScheme("fake", [] {
    return Tellarix::IO::RecordStreamPtr(new FakeStream);
});

/** A record of a stream at 1 Hz whose samples count up from its start. */
inline Tellarix::RecordPtr fakeRecord(const char *id, Tellarix::Core::Time start, int count)
{
    Tellarix::Core::SmartPointer<Tellarix::IntArray> samples(new Tellarix::IntArray(count));
    for (int i = 0; i < count; ++i)
        samples->typedData()[i] = static_cast<int>(start.seconds() % 100000) + i;
    return new Tellarix::Record(Tellarix::StreamCodes::FromID(id), start, 1, samples);
}
