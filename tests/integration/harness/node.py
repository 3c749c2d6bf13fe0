"""Running the Node control point's scripts (tests/integration/node/) inside the test's namespace."""

import json
import os
import subprocess

NODE_DIRECTORY = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "node")


def run_script(test, script, arguments, timeout=60):
    """Runs node on `script` with `arguments` and answers the JSON records it printed, one per line."""
    if not os.path.isdir(os.path.join(NODE_DIRECTORY, "node_modules", "upnp-mediarenderer-client")):
        test.fail("the Node control point is not installed in %s: run `npm ci --no-audit --no-fund` there "
                  "(the test integration.node_control_point does)" % NODE_DIRECTORY)
    completed = subprocess.run(["node", os.path.join(NODE_DIRECTORY, script), *arguments], cwd=NODE_DIRECTORY,
                               capture_output=True, text=True, timeout=timeout)
    print("----- node %s -----\n%s%s----- end of node -----" % (script, completed.stdout, completed.stderr))
    test.assertEqual(completed.returncode, 0, "node %s exited with %d" % (script, completed.returncode))
    return [json.loads(line) for line in completed.stdout.splitlines() if line.startswith("{")]
