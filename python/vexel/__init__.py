"""Statistics on NumPy arrays: descriptive, distributions, random numbers, tests and more."""
