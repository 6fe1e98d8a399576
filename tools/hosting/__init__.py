"""The launcher's hosts on one machine: downloads, accounts, pages and their faults."""
