"""Turns a game folder into a tree of files that any web server can serve."""
