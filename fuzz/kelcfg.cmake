# fuzz_kelcfg: the reader of kelcfg's settings files (app/deploy/TransferFile,
# which with its texts needs nothing of Windows) fed with arbitrary files.
# Run it with tools/run-fuzzers.sh; its corpus starts from exports of the demo
# configuration, one per product (kelcfg/inputs/, made by kelcfg/make-inputs.sh).
set(KEL_KELCFG_FUZZ_DIR ${CMAKE_CURRENT_LIST_DIR}/kelcfg)

kel_fuzz_target(fuzz_kelcfg ${KEL_KELCFG_FUZZ_DIR}/TransferFileFuzzer.cpp
                            ${PROJECT_SOURCE_DIR}/app/deploy/TransferFile.cpp
                            ${PROJECT_SOURCE_DIR}/app/deploy/TransferTexts.cpp
                DICT ${KEL_KELCFG_FUZZ_DIR}/kelcfg.dict
                INPUTS ${KEL_KELCFG_FUZZ_DIR}/inputs)
