"""Engineering library; geometry is in ostrel.geometry."""

__version__ = "0.1.0"
