"""The groups of cases. Each has a process, a network and a record of its own."""
