#!/usr/bin/env node
// The command line.

process.stderr.write('tarqo-mcp: nothing is served yet\n');
process.exitCode = 1;
