"""Writes the scenes of this folder; see ../generate.py."""
