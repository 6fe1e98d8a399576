"""Measures the built launcher beside other tools."""
