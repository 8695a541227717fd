#!/bin/sh
# Starts the server with the Node that it was packaged with.
exec /usr/lib/tarqo-mcp/node /usr/lib/tarqo-mcp/dist/main.js "$@"
