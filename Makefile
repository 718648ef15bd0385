# Every target installs what it lacks, configures, builds and runs; `make help` lists them.
SHELL := /bin/bash
JOBS ?= $(shell nproc)
# What `make run` searches the sample archive for.
TEXT ?= 여행
export TEXT
# How long `make fuzz` gives each target.
FUZZ_SECONDS ?= 30
COMMAND := build/release/apps/quorvel/quorvel

.DEFAULT_GOAL := help
.PHONY: help run test slow check fuzz bench arm64 docs clean release packages

help: ## this list
	@sed -n 's/^\([a-z0-9]*\):.*## /make \1\t/p' Makefile | expand -t 14

run: release ## search the sample archive (TEXT=...)
	$(COMMAND) search --reply examples/archive.json --text "$$TEXT"

test: release ## build and run the tests but the slow ones
	ctest --preset release -j 2 -LE slow

slow: release ## the slow tests: races, growth, the keychain's faults in full
	ctest --preset release -L slow

check: packages ## format, layers, headers, names, style, install tree, clang-tidy
	@scripts/install-packages.sh packages-check.txt
	scripts/check.sh

fuzz: packages ## run every fuzz target (FUZZ_SECONDS=30)
	@scripts/install-packages.sh packages-check.txt
	scripts/fuzz.sh $(FUZZ_SECONDS)

bench: packages ## measure ours against peers and floors
	@scripts/install-packages.sh packages-bench.txt
	scripts/bench.sh

arm64: packages ## build for 64-bit ARM and run the tests under an emulator
	@scripts/install-packages.sh packages-arm64.txt
	scripts/arm64.sh

docs: release ## write docs/operations.md from the command's own table
	scripts/operations_page.sh $(COMMAND) docs/operations.md

clean: ## remove everything built
	rm -rf build

release: packages
	cmake --preset release
	cmake --build --preset release -j $(JOBS)

packages:
	@scripts/install-packages.sh packages.txt
