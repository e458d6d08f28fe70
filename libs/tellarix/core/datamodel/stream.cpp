#include "stream.h"

#include <utility>

namespace Tellarix {
namespace DataModel {

Stream::Stream(std::string code) : _code(std::move(code))
{}

Stream::~Stream() = default;

} // namespace DataModel
} // namespace Tellarix
