#!/usr/bin/env bash
# Installs the Node control point of the integration tests (upnp-mediarenderer-client and what it needs)
# into node_modules/ here, exactly as package-lock.json says; does nothing when that install is current.
set -euo pipefail
cd "$(dirname "$0")"
if [[ node_modules/.package-lock.json -nt package-lock.json ]]; then
  echo "node_modules is current"
  exit 0
fi
exec npm ci --no-audit --no-fund
