#pragma once

/// Gives the program its standard output back, which is silent while its libraries load. Called once, as the
/// first thing that `main` does.
void EndQuietLoading();
