// How long a statement may take where nothing else is said of it.
#pragma once

namespace torvik {

// Of the engine's queries and those of a fetch, at a till and at the back office; seconds.
inline constexpr int kQueryTimeout = 600;

}  // namespace torvik
