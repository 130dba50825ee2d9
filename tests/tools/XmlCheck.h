// A small XML well-formedness check for the tool's SVG output.
#pragma once

#include <string>

namespace zebreader81::test {

/// "" when `doc` is a well-formed XML document (one root, nested tags, quoted attributes,
/// known entities), else what is wrong first.
std::string xmlProblem(const std::string& doc);

} // namespace zebreader81::test
