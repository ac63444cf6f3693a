# Entry points for people and CI; CMake does the real work.
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
DATA ?= ../shared/data/esbc-2020-177

# The main job on the default example: the real ESBC day with precise
# orbits and clocks.
RUN_ARGS ?=

.PHONY: all release run test bench sanitize clean

all: release

release:
	cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DORVO_TESTS=OFF >/dev/null
	cmake --build build/release -j $(JOBS) --target orvo orvo-simulate

run: release
	./build/release/orvo $(RUN_ARGS)

test:
	cmake -S . -B build/test -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
	cmake --build build/test -j $(JOBS)
	cd build/test && ctest --output-on-failure -j $(JOBS)

bench:
	cmake -S . -B build/bench -DCMAKE_BUILD_TYPE=Release -DORVO_TESTS=OFF -DORVO_BENCH=ON >/dev/null
	cmake --build build/bench -j $(JOBS) --target orvo orvo_bench
	./build/bench/orvo_bench

sanitize:
	cmake -S . -B build/sanitize -DCMAKE_BUILD_TYPE=Debug -DORVO_SANITIZE=ON >/dev/null
	cmake --build build/sanitize -j $(JOBS)
	cd build/sanitize && ctest --output-on-failure -j $(JOBS)

clean:
	rm -rf build
