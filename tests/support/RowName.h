#pragma once

/// Names the cases of a parameterised suite after the `name` of their rows.
inline constexpr auto rowName = [](const auto& row) { return row.param.name; };
