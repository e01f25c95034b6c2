#!/bin/sh
# Usage: readme_shows_example.sh SOURCE_DIR. Fails unless the README's C++ block is docs/example_host.cpp, word for word.
sed -n '/^```cpp$/,/^```$/p' "$1/README.md" | sed '1d;$d' | diff - "$1/docs/example_host.cpp"
