// A library that cannot be loaded: its function needs one that is defined nowhere.

extern "C" {
double nag2_not_in_any_library(double x);
double STATS_NeedsTheMissingFunction_HW(double x) { return nag2_not_in_any_library(x); }
}
