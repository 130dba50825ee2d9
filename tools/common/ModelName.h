// How both tools name a model: a number 0-41, a display name in any case, or the name of
// a simulated family (opscan, scanmark, pdi, ezdata), which stands for its usual model.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zebreader::cli {

/// The model `text` names, or nullopt with `problem` saying why not.
std::optional<int32_t> modelFromName(const std::string& text, std::string& problem);

/// The syntax, for help texts.
inline constexpr const char* modelSyntax =
    "a number 0-41, a display name (any case) or a family: opscan, scanmark, pdi, ezdata";

} // namespace zebreader::cli
