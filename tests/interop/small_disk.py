"""A small file system of a test's own, filled up to a number of free kilobytes: how a full disk is made. It takes root, to mount it."""
import errno
import os
import shutil
import subprocess
import tempfile


class SmallDisk:
    """For a TestCase: self.mount is the folder that the file system is mounted at, from mount_disk() on, up to the end of the test."""

    SIZE = "1m"

    def mount_disk(self):
        """Skips the test where that can't be."""
        self.mount = tempfile.mkdtemp()
        made = self.mount_at()
        if made.returncode != 0:
            os.rmdir(self.mount)
            print(f"SKIPPED here: a small file system can't be mounted ({made.stderr.strip()})")
            self.skipTest("mount needs root")
        self.addCleanup(self.unmount)

    def mount_at(self):
        """The finished command that mounts it; a file system in memory."""
        return subprocess.run(["mount", "-t", "tmpfs", "-o", "size=" + self.SIZE, "tmpfs", self.mount], capture_output=True, text=True)

    def unmount(self):
        subprocess.run(["umount", self.mount], check=True)
        os.rmdir(self.mount)

    def leave_free(self, kilobytes):
        """Fills the disk up, with a file "filler", but for so much."""
        filler = os.path.join(self.mount, "filler")
        if os.path.exists(filler):
            os.remove(filler)
        folder = os.open(self.mount, os.O_RDONLY)
        os.fsync(folder)  # the blocks of the old filler are free only now
        os.close(folder)
        free = shutil.disk_usage(self.mount).free - kilobytes * 1024
        try:
            with open(filler, "wb", buffering=0) as file:
                file.write(bytes(max(free, 0)))  # as much of it as there is room for
                os.fsync(file.fileno())
        except OSError as failure:
            if failure.errno != errno.ENOSPC:
                raise
