"""Other libraries' names for what vexel does."""

from __future__ import annotations
