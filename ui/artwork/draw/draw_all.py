#!/usr/bin/env python3
"""Draw every picture of the window into the directory above this one."""
import os

import controls
import figures
import marks
import scene

if __name__ == "__main__":
    here = os.path.dirname(os.path.abspath(__file__))
    out = os.path.dirname(here)
    controls.draw(out)
    figures.draw(out)
    marks.draw(out)
    scene.draw(out)
