# Installs the end-to-end test's npm packages from the committed lock, once: when the installed
# playwright-core is already the locked one nothing is fetched, so a machine without the registry
# still runs the test after its first install.
#   cmake -DNPM=/usr/bin/npm -DDIR=<folder with package.json and package-lock.json> -P npmmodules.cmake
file(READ "${DIR}/package-lock.json" lock)
string(JSON locked GET "${lock}" packages "node_modules/playwright-core" version)
set(installed "")
if(EXISTS "${DIR}/node_modules/playwright-core/package.json")
    file(READ "${DIR}/node_modules/playwright-core/package.json" manifest)
    string(JSON installed GET "${manifest}" version)
endif()
if(installed STREQUAL locked)
    message(STATUS "playwright-core ${locked} is installed")
    return()
endif()
execute_process(
    COMMAND "${NPM}" ci --prefer-offline --ignore-scripts --no-audit --no-fund
    WORKING_DIRECTORY "${DIR}"
    RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "npm ci failed (${status}) in ${DIR}")
endif()
