"""What makes things go wrong around the built launcher: wires, disks, kills, and the record of it."""
