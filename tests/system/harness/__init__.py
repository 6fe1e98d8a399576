"""What the system tests share: a world of hosts, players and games around the built launcher."""
