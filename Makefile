# Entry points for people and CI; CMake does the real work.
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
DATA ?= ../shared/data/esbc-2020-177

# The main job: a simulated station-day with known truth (orvo-simulate
# defaults: 24 h at 30 s of GPS, GLONASS and Galileo, 0.3 m code and 2 mm
# phase noise), processed by a full static PPP run, then compared with the
# truth. EXAMPLE is the folder of the data set; SIM_ARGS adds simulator
# options that keep the day and marker (e.g. -h6 -nc0), used only when the
# folder holds no data set yet; RUN_ARGS adds orvo options.
EXAMPLE ?= example
SIM_ARGS ?=
RUN_ARGS ?=
EX_OBS = SIMU1770.20o
ORVO_EXAMPLE = -csGRE -r$(EX_OBS) -epSIMU1770.sp3 -ecSIMU1770.clk -gf$(EX_OBS).glnfc \
	-lPc3,L3 -tmSAAST,NIELL -ti01:00:00 -tg -me5 -st -xSTA -gpsSIMU1770.gps -otSIMU1770.trp

# System packages that a target needs: root installs directly, anyone else
# through sudo.
APT_INSTALL = $(shell [ "$$(id -u)" = 0 ] || echo sudo) apt-get install -y

.PHONY: all train release run plots campaign test bench sanitize fuzz clean

all: release

# The released and the timed programs are compiled with counts of their own
# runs, which guide inlining and code layout and change no result: a
# counting build in build/train processes the example day and, when its data
# are at hand, the real day of the benchmarks. The counts are taken afresh
# every time; a file compiled without them (new, or not run) is optimised as
# it would be without a profile.
PROFILE_DIR = $(CURDIR)/build/train/profile

train:
	cmake -S . -B build/train -DCMAKE_BUILD_TYPE=Release -DORVO_TESTS=OFF -DORVO_PROFILE=generate \
	  -DORVO_PROFILE_DIR=$(PROFILE_DIR) >/dev/null
	cmake --build build/train -j $(JOBS) --target orvo orvo-simulate
	@test -f $(EXAMPLE)/$(EX_OBS) || { mkdir -p $(EXAMPLE) && ./build/train/orvo-simulate -o$(EXAMPLE) $(SIM_ARGS); }
	rm -rf $(PROFILE_DIR)
	cd $(EXAMPLE) && $(CURDIR)/build/train/orvo $(ORVO_EXAMPLE) > /dev/null
	if [ -r $(DATA)/esbc1770.20o ]; then ./bench/whole_day.sh --once build/train/orvo $(DATA); fi

release: train
	cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DORVO_TESTS=OFF -DORVO_PROFILE=use \
	  -DORVO_PROFILE_DIR=$(PROFILE_DIR) >/dev/null
	cmake --build build/release -j $(JOBS) --target orvo orvo-simulate

run: release
	@test -f $(EXAMPLE)/$(EX_OBS) || { mkdir -p $(EXAMPLE) && ./build/release/orvo-simulate -o$(EXAMPLE) $(SIM_ARGS); }
	@# orvo keeps a scratch file in its working folder: run it beside the data.
	cd $(EXAMPLE) && { $(CURDIR)/build/release/orvo $(ORVO_EXAMPLE) $(RUN_ARGS) > SIMU1770.report; \
	  rc=$$?; cat SIMU1770.report; exit $$rc; }
	@echo
	./build/release/orvo-simulate --compare $(EXAMPLE)/SIMU1770.truth $(EXAMPLE)/SIMU1770.gps $(EXAMPLE)/SIMU1770.trp

# Pictures of the example (tools/orvo-plot, needs gnuplot): the run of
# `make run` once more with the kinematic pass, the receiver clock and the
# sky plot files, then one PNG per kind in $(EXAMPLE)/plots/.
PLOT_FILES = -xSTA,KIN -gpkSIMU1770.kin -cfSIMU1770.rclk -spSIMU1770.sky
PLOT_TITLE = Simulated station SIMU, 2020-06-25

plots: release
	@command -v gnuplot >/dev/null 2>&1 || { $(APT_INSTALL) gnuplot-nox; }
	@test -f $(EXAMPLE)/$(EX_OBS) || { mkdir -p $(EXAMPLE) && ./build/release/orvo-simulate -o$(EXAMPLE) $(SIM_ARGS); }
	cd $(EXAMPLE) && $(CURDIR)/build/release/orvo $(ORVO_EXAMPLE) $(PLOT_FILES) $(RUN_ARGS) > SIMU1770.plots.report
	mkdir -p $(EXAMPLE)/plots
	tools/orvo-plot ztd $(EXAMPLE)/SIMU1770.trp $(EXAMPLE)/plots/ztd.png "$(PLOT_TITLE): zenith total delay"
	tools/orvo-plot clock $(EXAMPLE)/SIMU1770.rclk $(EXAMPLE)/plots/clock.png "$(PLOT_TITLE): receiver clock"
	tools/orvo-plot kin $(EXAMPLE)/SIMU1770.kin $(EXAMPLE)/plots/kin.png "$(PLOT_TITLE): kinematic position"
	tools/orvo-plot sky $(EXAMPLE)/SIMU1770.sky $(EXAMPLE)/plots/sky.png "$(PLOT_TITLE): sky plot"
	@echo "Pictures in $(EXAMPLE)/plots/"

# The example campaign (campaign/README.md): simulated station-days and the
# real ESBC day through Snakemake on CAMPAIGN_CORES cores, results in
# CAMPAIGN_WORK; prints the time series, the failed days and the simulated
# days against their truth. Snakemake redoes only what is missing or stale.
CAMPAIGN_WORK ?= build/campaign
CAMPAIGN_CORES ?= 2
CAMPAIGN_CONFIG = table=$(CURDIR)/campaign/example/campaign.tsv \
	catalogue=$(CURDIR)/campaign/example/catalogue.tsv orvo=$(CURDIR)/build/release/orvo \
	simulate=$(CURDIR)/build/release/orvo-simulate prepare=$(CURDIR)/campaign/example/prepare.smk


campaign: release
	@command -v snakemake >/dev/null 2>&1 || { $(APT_INSTALL) snakemake; }
	@command -v gnuplot >/dev/null 2>&1 || { $(APT_INSTALL) gnuplot-nox; }
	mkdir -p $(CAMPAIGN_WORK)
	snakemake -s campaign/Snakefile -d $(CAMPAIGN_WORK) --cores $(CAMPAIGN_CORES) --keep-going \
	  --config $(CAMPAIGN_CONFIG)
	@echo; column -t -s '	' $(CAMPAIGN_WORK)/timeseries.tsv; echo; cat $(CAMPAIGN_WORK)/timeseries.log
	@echo; python3 campaign/campaign.py truth $(CAMPAIGN_WORK)/timeseries.tsv campaign/example/sim/*/*.truth

test:
	cmake -S . -B build/test -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
	cmake --build build/test -j $(JOBS)
	cd build/test && ctest --output-on-failure -j $(JOBS)

bench: train
	cmake -S . -B build/bench -DCMAKE_BUILD_TYPE=Release -DORVO_TESTS=OFF -DORVO_BENCH=ON -DORVO_PROFILE=use \
	  -DORVO_PROFILE_DIR=$(PROFILE_DIR) >/dev/null
	cmake --build build/bench -j $(JOBS) --target orvo orvo_bench
	./build/bench/orvo_bench
	./bench/whole_day.sh build/bench/orvo $(DATA)

sanitize:
	cmake -S . -B build/sanitize -DCMAKE_BUILD_TYPE=Debug -DORVO_SANITIZE=ON >/dev/null
	cmake --build build/sanitize -j $(JOBS)
	cd build/sanitize && ctest --output-on-failure -j $(JOBS)

# Every file reader under libFuzzer with address and undefined-behaviour
# sanitizers (fuzz/README in the top README): builds the targets with clang,
# cuts the seed corpora from the shared data, runs each target FUZZ_SECONDS.
FUZZ_SECONDS ?= 60
FUZZ_CXX ?= clang++-14
SHARED_DATA ?= ../shared/data

fuzz:
	cmake -S fuzz -B build/fuzz/bin -DCMAKE_CXX_COMPILER=$(FUZZ_CXX) >/dev/null
	cmake --build build/fuzz/bin -j $(JOBS)
	python3 fuzz/make-corpora.py $(SHARED_DATA) build/fuzz/corpus >/dev/null
	fuzz/run.sh build/fuzz/bin build/fuzz/corpus build/fuzz/findings $(FUZZ_SECONDS)

clean:
	rm -rf build
