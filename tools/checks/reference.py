"""The manual's reference is what the type libraries' snapshots say."""
import os
import runpy
import sys

from project import ROOT

sys.argv = ["manual.py", "--check"]
runpy.run_path(os.path.join(ROOT, "tools", "lib", "manual.py"), run_name="__main__")
