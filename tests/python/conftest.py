"""Shared by the tests of the Python package."""

import os
import signal

import hypothesis

hypothesis.settings.register_profile(
    "check", deadline=None, max_examples=int(os.environ.get("VEXEL_EXAMPLES", "60")), derandomize=True,
    suppress_health_check=list(hypothesis.HealthCheck))
hypothesis.settings.load_profile("check")

# A shell's background jobs ignore it, and so would the interpreter.
signal.signal(signal.SIGINT, signal.default_int_handler)
