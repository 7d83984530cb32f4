"""Installs the package as a user would, with pip from the source tree into
a fresh virtual environment that sees the system's packages (pandas), and
checks records with it from outside the tree, without PYTHONPATH. Ends with
status 77 (skipped) and says why when pip or venv is missing.

    install_check.py SOURCE_DIR DATA_DIR RULES_DIR
"""
import os
import subprocess
import sys
import tempfile

CHECK = """
import os, sys
import pandas as pd
import quorel
package = os.path.dirname(quorel.__file__)
assert package.startswith(sys.prefix), package
assert os.path.exists(os.path.join(package, "libquorel.so.1")), os.listdir(package)
data, rules = sys.argv[1:3]
records = pd.read_csv(os.path.join(data, "antraege.csv"), sep=";", dtype=str, encoding="cp1252")
frame = quorel.check_frame(records, quorel.RuleModule(os.path.join(rules, "antrag.qr")),
                           materials={"Gemeinden": os.path.join(data, "gemeinden.csv")})
summary = frame.attrs["summary"]
assert summary["checked"] == len(records) and summary["errors"] > 0, summary
print("checked with", package, summary)
"""


def main():
    source, data, rules = sys.argv[1:4]
    for module in ("pip", "venv", "ensurepip"):
        if subprocess.run([sys.executable, "-c", "import " + module], capture_output=True).returncode != 0:
            print("SKIPPED: %s lacks %s (install python3-pip python3-venv)" % (sys.executable, module))
            return 77
    environment = {k: v for k, v in os.environ.items() if k != "PYTHONPATH"}
    with tempfile.TemporaryDirectory(prefix="quorel-install-") as folder:
        venv = os.path.join(folder, "venv")
        subprocess.run([sys.executable, "-m", "venv", "--system-site-packages", venv], check=True)
        python = os.path.join(venv, "bin", "python")
        # Offline: setuptools, wheel and the build's needs come from the system.
        subprocess.run([python, "-m", "pip", "install", "--no-build-isolation", "--no-index", "--no-deps",
                        "--no-cache-dir", source], check=True, cwd=folder, env=environment)
        subprocess.run([python, "-c", CHECK, data, rules], check=True, cwd=folder, env=environment)
    return 0


if __name__ == "__main__":
    sys.exit(main())
