"""The system's fingerprint daemon with a reader made of software."""
