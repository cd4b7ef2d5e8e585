#!/bin/sh
# Runs a compiler only to list the headers of a file: clang-tidy has already read all of it.
exec "$@" -E
