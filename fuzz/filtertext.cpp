// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/math/filterparser.h>

#include <cmath>
#include <cstdlib>

using namespace Tellarix::Math::Filtering;

namespace {

/** Windows above this only cost the fuzzer memory. */
constexpr double LongestWindow = 1E4;

void check(bool holds)
{
    if (!holds)
        std::abort();
}

bool isSmall(const FilterDefinition &definition)
{
    for (const FilterStage &stage : definition.stages()) {
        for (const double value : stage.values) {
            if (value > LongestWindow)
                return false;
        }
    }
    return true;
}

void run(const FilterDefinition &definition)
{
    const auto filter = definition.create<float>();
    check((filter == nullptr) == definition.isEmpty());
    if (!filter || definition.stages().size() > 20 || !isSmall(definition))
        return;
    float samples[64] = {1};
    filter->setSamplingFrequency(20);
    filter->apply(64, samples);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    FilterDefinition definition;
    FilterError error;
    if (!parseFilterDefinition(text, definition, &error)) {
        check(error.column >= 1 && static_cast<size_t>(error.column) <= size + 1);
        check(!error.message.empty() && definition.isEmpty());
        return 0;
    }
    check(error.column == 0 && error.message.empty());

    FilterDefinition again;
    check(parseFilterDefinition(definition.toString(), again, nullptr));
    check(again.toString() == definition.toString());
    if (definition.problemAt(20).empty())
        run(definition);
    return 0;
}
