// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/math/filterparser.h>

#include <tellarix/core/strings.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <utility>

namespace Tellarix {
namespace Math {
namespace Filtering {

namespace {

// Not those of <cctype>, which follow the locale of the program.
bool isBlank(char c)
{
    return c != '\0' && std::strchr(" \t\r\n\f\v", c);
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

std::string quoted(const std::string &text)
{
    return "\"" + text + "\"";
}

/** "a", "a and b", "a, b and c" */
std::string enumeration(const std::vector<std::string> &names)
{
    std::string text;
    for (size_t i = 0; i < names.size(); ++i) {
        if (i > 0)
            text += i + 1 == names.size() ? " and " : ", ";
        text += names[i];
    }
    return text;
}

std::string knownNames()
{
    std::vector<std::string> names;
    for (const FilterDescriptionCPtr &filter : knownFilters())
        names.push_back(filter->name);
    names.push_back(NoFilterName);
    return enumeration(names);
}

/** A place in the text and what is wrong there; thrown and caught within this file. */
struct Failure
{
    size_t position;
    std::string message;
};

/** The parameters of one filter while they are read. */
struct Arguments
{
    std::vector<std::optional<double>> values;
    std::vector<FilterTextPart> places;
    bool named{false}; /**< a parameter was given by name */
    int count{0};
};

class Parser
{
public:
    explicit Parser(const std::string &text) : _text(text) {}

    std::vector<FilterPlace> parse()
    {
        std::vector<FilterPlace> places;
        skipBlanks();
        if (atEnd())
            return places;
        for (;;) {
            parseStage(places);
            if (atEnd())
                return places;
            if (!take('|'))
                throw Failure{_position, "expected \"|\" or the end" + found()};
        }
    }

private:
    bool atEnd() const { return _position >= _text.size(); }
    char next() const { return atEnd() ? '\0' : _text[_position]; }

    void skipBlanks()
    {
        while (isBlank(next()))
            ++_position;
    }

    bool take(char c)
    {
        if (atEnd() || next() != c)
            return false;
        _end = ++_position;
        skipBlanks();
        return true;
    }

    /** Tells of the character at the position, all bytes of it. */
    std::string found() const
    {
        if (atEnd())
            return ", but the text ends";
        size_t end = _position + 1;
        while (end < _text.size() && (_text[end] & 0xC0) == 0x80)
            ++end;
        return " instead of " + quoted(_text.substr(_position, end - _position));
    }

    std::string takeName()
    {
        const size_t start = _position;
        while (isLetter(next()) || (_position > start && isDigit(next())))
            ++_position;
        const std::string name = _text.substr(start, _position - start);
        _end = _position;
        skipBlanks();
        return name;
    }

    void takeDigits()
    {
        while (isDigit(next()))
            ++_position;
    }

    double takeNumber(const std::string &what)
    {
        const size_t start = _position;
        if (next() == '-' || next() == '+')
            ++_position;
        const size_t mantissa = _position;
        takeDigits();
        size_t digits = _position - mantissa;
        if (next() == '.') {
            ++_position;
            const size_t fraction = _position;
            takeDigits();
            digits += _position - fraction;
        }
        if (digits == 0) {
            _position = start;
            throw Failure{start, "expected a number for " + what + found()};
        }
        takeExponent();

        double value = 0;
        const std::string text = _text.substr(start, _position - start);
        if (!Core::fromString(value, text))
            throw Failure{start, what + " " + text + " is beyond the range of numbers"};
        _end = _position;
        skipBlanks();
        return value;
    }

    void takeExponent()
    {
        const size_t start = _position;
        if (next() != 'e' && next() != 'E')
            return;
        ++_position;
        if (next() == '-' || next() == '+')
            ++_position;
        if (!isDigit(next()))
            _position = start; // What follows is no part of the number.
        takeDigits();
    }

    void parseStage(std::vector<FilterPlace> &places)
    {
        const size_t start = _position;
        const std::string name = takeName();
        if (name.empty())
            throw Failure{start, "expected the name of a filter" + found()};

        const bool isNoFilter = Core::compareNoCase(name, NoFilterName) == 0;
        static const auto none =
            std::make_shared<FilterDescription>(FilterDescription{NoFilterName, {}, {}, {}});
        const FilterDescriptionCPtr filter = isNoFilter ? none : knownFilter(name);
        if (!filter)
            throw Failure{start, "unknown filter " + quoted(name) + "; known are " + knownNames()};

        const FilterPlace place = parseParameters(filter, start);
        if (!isNoFilter)
            places.push_back(place);
    }

    FilterPlace parseParameters(const FilterDescriptionCPtr &described, size_t start)
    {
        const FilterDescription &filter = *described;
        Arguments arguments;
        arguments.values.resize(filter.parameters.size());
        arguments.places.resize(filter.parameters.size(), {_position, _position});

        size_t end = _position;
        if (take('(')) {
            end = _position;
            if (next() != ')') {
                do {
                    parseParameter(filter, arguments);
                } while (take(','));
            }
            end = _position;
            if (!take(')'))
                throw Failure{_position, "expected \",\" or \")\"" + found()};
        }
        const FilterValues values = checkedValues(described, arguments, end);
        return {{described, values}, {start, _end}, arguments.places};
    }

    void parseParameter(const FilterDescription &filter, Arguments &arguments)
    {
        const size_t start = _position;
        const std::string name = takeName();
        size_t index = static_cast<size_t>(arguments.count);
        if (!name.empty()) {
            if (!take('='))
                throw nameFailure(filter, name, start);
            index = namedParameter(filter, arguments, name, start);
            arguments.named = true;
        } else if (index >= filter.parameters.size()) {
            throw Failure{start, "too many parameters; allowed is " + filter.usage()};
        } else if (arguments.named) {
            throw Failure{start, "expected a name: behind a named parameter all are given by name"};
        }

        const size_t position = _position;
        arguments.values[index] = takeNumber(filter.parameters[index].name);
        arguments.places[index] = {position, _end};
        ++arguments.count;
    }

    Failure nameFailure(const FilterDescription &filter, const std::string &name, size_t start)
    {
        if (filter.parameterIndex(name) >= 0)
            return {_position, "expected \"=\" behind " + quoted(name) + found()};
        return {start, "expected a number or the name of a parameter instead of " + quoted(name) +
                           "; allowed is " + filter.usage()};
    }

    size_t namedParameter(const FilterDescription &filter, const Arguments &arguments,
                          const std::string &name, size_t start) const
    {
        const int index = filter.parameterIndex(name);
        if (index < 0)
            throw Failure{start,
                          "unknown parameter " + quoted(name) + "; allowed is " + filter.usage()};
        if (arguments.values[static_cast<size_t>(index)])
            throw Failure{start,
                          filter.parameters[static_cast<size_t>(index)].name + " is given twice"};
        return static_cast<size_t>(index);
    }

    FilterValues checkedValues(const FilterDescriptionCPtr &described, const Arguments &arguments,
                               size_t end) const
    {
        const FilterDescription &filter = *described;
        FilterStage stage{described, {}};
        for (size_t i = 0; i < filter.parameters.size(); ++i) {
            const FilterParameter &parameter = filter.parameters[i];
            if (!arguments.values[i] && !parameter.defaultValue)
                throw Failure{end, "parameter " + quoted(parameter.name) +
                                       " is missing; allowed is " + filter.usage()};
            stage.values.push_back(arguments.values[i] ? *arguments.values[i]
                                                       : *parameter.defaultValue);
        }
        const FilterValueProblem problem = FilterDefinition::CheckValues(stage);
        if (problem.parameter >= 0)
            throw Failure{arguments.places[static_cast<size_t>(problem.parameter)].begin,
                          problem.message};
        return stage.values;
    }

    const std::string &_text;
    size_t _position{0};
    size_t _end{0}; /**< of what was taken last, without the blanks behind it */
};

/** Counts characters: what follows the first byte of one in UTF-8 counts nothing. */
int columnOf(const std::string &text, size_t position)
{
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(position);
    const auto isFirstByte = [](char c) { return (c & 0xC0) != 0x80; };
    return static_cast<int>(std::count_if(text.begin(), end, isFirstByte)) + 1;
}

} // namespace

bool parseFilterDefinition(const std::string &text, FilterDefinition &definition,
                           FilterError *error)
{
    FilterError result;
    try {
        FilterDefinition read;
        for (FilterPlace &place : Parser(text).parse())
            read.append(std::move(place.stage));
        definition = std::move(read);
    } catch (const Failure &failure) {
        result = {columnOf(text, failure.position), failure.message};
    }
    const bool isRight = result.column == 0;
    if (error)
        *error = std::move(result);
    return isRight;
}

std::vector<FilterPlace> filterPlaces(const std::string &text)
{
    try {
        return Parser(text).parse();
    } catch (const Failure &) {
        return {};
    }
}

std::string withFilterValues(const std::string &text, size_t stage, const FilterValues &values)
{
    const std::vector<FilterPlace> places = filterPlaces(text);
    if (stage >= places.size() || values.size() != places[stage].values.size())
        return text;

    const FilterPlace &place = places[stage];
    std::map<size_t, std::pair<size_t, std::string>> changes; // by where they begin
    std::string added;
    bool hasValues = false;
    for (size_t i = 0; i < values.size(); ++i) {
        const FilterTextPart &part = place.values[i];
        const bool isWritten = part.begin < part.end;
        hasValues = hasValues || isWritten;
        if (values[i] == place.stage.values[i])
            continue;
        if (isWritten)
            changes[part.begin] = {part.end, numberText(values[i])};
        else
            added += (added.empty() ? "" : ", ") + place.stage.filter->parameters[i].name + "=" +
                     numberText(values[i]);
    }
    if (!added.empty()) {
        const bool isClosed = text[place.text.end - 1] == ')';
        const size_t end = place.text.end - (isClosed ? 1 : 0);
        added = hasValues ? ", " + added : added;
        changes[end] = {end, isClosed ? added : "(" + added + ")"};
    }

    std::string result = text;
    // Behind each change the text has moved, so the last one is the first.
    for (auto change = changes.rbegin(); change != changes.rend(); ++change)
        result.replace(change->first, change->second.first - change->first, change->second.second);
    return result;
}

std::string filterProblem(const std::string &text, double samplingFrequency)
{
    FilterDefinition definition;
    FilterError error;
    if (!parseFilterDefinition(text, definition, &error))
        return "column " + std::to_string(error.column) + ": " + error.message;
    return definition.problemAt(samplingFrequency);
}

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
