"""A made-up game folder: many files with names and contents as games have them."""
