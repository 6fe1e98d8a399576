"""Who plays the session: hands on the keyboard and the mouse, eyes on the windows."""
