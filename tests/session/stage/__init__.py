"""What a session is played on: a display, a desktop, a network, the hosts and the launcher."""
