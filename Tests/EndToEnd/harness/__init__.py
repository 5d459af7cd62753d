"""A desktop of our own, the program on it, and a person at its keyboard."""
