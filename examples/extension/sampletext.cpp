// SPDX-License-Identifier: LGPL-3.0-or-later

// A file format: a line "samples STREAM TIME HZ", then a number in each line.

#include <tellarix/client/io/recordformat.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/typedarray.h>
#include <tellarix/core/strings.h>

using namespace Tellarix;
using Severity = IO::StreamMessage::Severity;

namespace {

const std::string Signature = "samples ";

bool beginsLikeSampleText(std::string_view firstBytes)
{
    return firstBytes.substr(0, Signature.size()) == Signature;
}

/** The whole file becomes one record. */
class SampleTextReader : public IO::RecordReader
{
public:
    explicit SampleTextReader(IO::RecordInput &input) : _input(input) {}

    bool begin(std::string &cause) override
    {
        std::string line;
        takeLine(line);
        const std::vector<std::string> words = Core::split(line, " ");
        const bool isWhole = words.size() == 4 && Core::fromString(_rate, words[3]) && _rate > 0;
        if (isWhole) {
            _codes = StreamCodes::FromID(words[1]);
            _start = Core::Time::FromString(words[2]);
        }
        cause = "the first line is not \"samples STREAM TIME HZ\"";
        return isWhole && _codes && _start.valid();
    }

    RecordPtr next() override
    {
        std::vector<double> samples;
        std::string line;
        for (int64_t offset = _offset; takeLine(line); offset = _offset) {
            double sample;
            if (Core::fromString(sample, line))
                samples.push_back(sample);
            else // A sample less would shift all that follow.
                return fault(offset, "\"" + line + "\" is no number");
        }
        if (samples.empty())
            return nullptr;
        const int count = static_cast<int>(samples.size());
        const RecordPtr record =
            new Record(_codes, _start, _rate, new DoubleArray(count, samples.data()));
        return _input.isRequested(*_codes, record->timeWindow()) ? record : nullptr;
    }

private:
    RecordPtr fault(int64_t offset, const std::string &cause)
    {
        _input.tell(Severity::Fault, offset, cause);
        return nullptr;
    }

    /** False at the end. */
    bool takeLine(std::string &line)
    {
        size_t end = _bytes.find('\n', _used);
        while (end == std::string::npos && _input.readBehind(_bytes))
            end = _bytes.find('\n', _used);
        if (_input.isClosed() || _used == _bytes.size())
            return false;
        line = _bytes.substr(_used, end == std::string::npos ? end : end - _used);
        _used = end == std::string::npos ? _bytes.size() : end + 1;
        _offset = static_cast<int64_t>(_used);
        return true;
    }

    IO::RecordInput &_input;
    std::string _bytes;
    size_t _used{0};
    int64_t _offset{0};
    StreamCodesCPtr _codes;
    Core::Time _start;
    double _rate{0};
};

const IO::RecordFormatOffer
    sampleText({"sample text",
                {"samples"},
                Signature.size(),
                beginsLikeSampleText,
                [](IO::RecordInput &input) { return std::make_unique<SampleTextReader>(input); }});

} // namespace
