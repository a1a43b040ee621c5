#pragma once

/// The texts of examples/light.conf and examples/dark.conf.
extern const char *const lightTheme;
extern const char *const darkTheme;
