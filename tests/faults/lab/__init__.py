"""What makes things go wrong around the built launcher, and the record of it."""
