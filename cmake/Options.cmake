# What a distributor decides at configure time. Hosts are "host" or "host:port", always https.
set(QUELLMOOR_DOWNLOAD_HOST "download.localhost:8443" CACHE STRING "Host of the manifest, the game files and the installers")
set(QUELLMOOR_ACCOUNT_HOST "account.localhost:8443" CACHE STRING "Host of the account API and the news page")
set(QUELLMOOR_WEBSITE_HOST "www.localhost:8443" CACHE STRING "Host of the web site")
set(QUELLMOOR_FORUM_HOST "forum.localhost:8443" CACHE STRING "Host of the community forum")
set(QUELLMOOR_WIKI_HOST "wiki.localhost:8443" CACHE STRING "Host of the community wiki")
set(QUELLMOOR_EXTRA_CA_FILE "" CACHE FILEPATH "Certificate authority trusted besides the system's; empty in a release")

option(QUELLMOOR_WITH_WEBENGINE "Show the news page with Qt WebEngine instead of Qt's text browser" ON)
option(QUELLMOOR_TOOLS "Build the sample game" ON)
option(QUELLMOOR_TESTS "Build the tests" ON)
option(QUELLMOOR_BENCH "Build the benchmarks" OFF)
set(QUELLMOOR_SANITIZER "" CACHE STRING "address or thread: build everything under that sanitizer; fuzzer: address, and the fuzz targets with libFuzzer")
set_property(CACHE QUELLMOOR_SANITIZER PROPERTY STRINGS "" address thread fuzzer)
