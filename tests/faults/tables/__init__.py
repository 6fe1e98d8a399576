"""The cases as data: a row says what is done and what has to be seen."""
