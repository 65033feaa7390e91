// The same pieces of work by Apache POI; each repetition prints its seconds and the processor's.
//
//   PoiPeer event|workbook JOB INPUT OUTPUT WARM_UPS REPEATS      JOB: R1 R2 R3, with workbook also E1 E2 I1 W1 W2
//   PoiPeer make PATH                                             a workbook with the contents of R1
import com.sun.management.OperatingSystemMXBean;
import java.io.BufferedOutputStream;
import java.io.File;
import java.io.FileInputStream;
import java.io.FileOutputStream;
import java.io.InputStream;
import java.io.OutputStream;
import java.lang.management.ManagementFactory;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import org.apache.poi.hssf.eventusermodel.HSSFEventFactory;
import org.apache.poi.hssf.eventusermodel.HSSFListener;
import org.apache.poi.hssf.eventusermodel.HSSFRequest;
import org.apache.poi.hssf.record.LabelSSTRecord;
import org.apache.poi.hssf.record.NumberRecord;
import org.apache.poi.hssf.record.Record;
import org.apache.poi.hssf.record.RKRecord;
import org.apache.poi.hssf.record.SSTRecord;
import org.apache.poi.hssf.usermodel.HSSFRow;
import org.apache.poi.hssf.usermodel.HSSFSheet;
import org.apache.poi.hssf.usermodel.HSSFWorkbook;
import org.apache.poi.poifs.filesystem.POIFSFileSystem;
import org.apache.poi.ss.usermodel.Cell;
import org.apache.poi.ss.usermodel.CellType;
import org.apache.poi.ss.usermodel.Row;

public class PoiPeer {
  static final int ROWS = 65000;
  static final int COLUMNS = 20;
  static final int TEXT_COLUMNS = 10;
  static final int MIXED_ROWS = 10000;
  static final int MIXED_COLUMNS = 10;
  static final int CHANGES = 1000;
  static final int TEXTS = 5000;

  static final String[] TEXT = new String[TEXTS];

  static {
    for (int i = 0; i < TEXTS; ++i) TEXT[i] = String.format("Text %04d", i);
  }

  // What keeps the readers' results from being thrown away.
  static double sum;
  static long cells;

  static class Listener implements HSSFListener {
    SSTRecord strings;

    public void processRecord(Record record) {
      switch (record.getSid()) {
        case SSTRecord.sid:
          strings = (SSTRecord) record;
          break;
        case NumberRecord.sid:
          sum += ((NumberRecord) record).getValue();
          ++cells;
          break;
        case RKRecord.sid:
          sum += ((RKRecord) record).getRKNumber();
          ++cells;
          break;
        case LabelSSTRecord.sid:
          sum += strings.getString(((LabelSSTRecord) record).getSSTIndex()).getString().length();
          ++cells;
          break;
        default:
          break;
      }
    }
  }

  static void readEvents(String path) throws Exception {
    try (POIFSFileSystem file = new POIFSFileSystem(new File(path), true);
        InputStream stream = file.createDocumentInputStream("Workbook")) {
      HSSFRequest request = new HSSFRequest();
      request.addListenerForAllRecords(new Listener());
      new HSSFEventFactory().processEvents(request, stream);
    }
  }

  static HSSFWorkbook open(String path) throws Exception {
    try (InputStream stream = new FileInputStream(path)) {
      return new HSSFWorkbook(stream);
    }
  }

  static void readWorkbook(String path) throws Exception {
    try (HSSFWorkbook book = open(path)) {
      for (int i = 0; i < book.getNumberOfSheets(); ++i) {
        for (Row row : book.getSheetAt(i)) {
          for (Cell cell : row) {
            sum += cell.getCellType() == CellType.STRING ? cell.getStringCellValue().length() : cell.getNumericCellValue();
            ++cells;
          }
        }
      }
    }
  }

  static void save(HSSFWorkbook book, String path) throws Exception {
    try (FileOutputStream file = new FileOutputStream(path);
        OutputStream stream = new BufferedOutputStream(file)) {
      book.write(stream);
      stream.flush();
      file.getFD().sync();
    }
  }

  static Cell cellAt(HSSFSheet sheet, int row, int column) {
    HSSFRow found = sheet.getRow(row);
    Cell cell = found.getCell(column);
    return cell != null ? cell : found.createCell(column);
  }

  static void change(String job, String path) throws Exception {
    try (HSSFWorkbook book = open(path)) {
      if (job.equals("E1")) {
        cellAt(book.getSheetAt(1), ROWS / 4, COLUMNS / 2).setCellValue(0.1);
      } else if (job.equals("I1")) {
        HSSFSheet sheet = book.getSheetAt(0);
        sheet.shiftRows(ROWS / 4, sheet.getLastRowNum(), 1);
        sheet.createRow(ROWS / 4);
      } else {
        for (int i = 0; i < CHANGES; ++i) {
          cellAt(book.getSheetAt(0), (int) ((long) i * 7919 % MIXED_ROWS), i % MIXED_COLUMNS).setCellValue(i + 0.5);
        }
      }
      save(book, path);
    }
  }

  static void write(String job, String path) throws Exception {
    boolean numbers = job.equals("W1");
    try (HSSFWorkbook book = new HSSFWorkbook()) {
      HSSFSheet sheet = book.createSheet("Data");
      for (int row = 0; row < ROWS; ++row) {
        HSSFRow made = sheet.createRow(row);
        for (int column = 0; column < (numbers ? COLUMNS : TEXT_COLUMNS); ++column) {
          if (numbers) {
            made.createCell(column).setCellValue(row * 1.37 + column * 0.001 + 0.1);
          } else {
            made.createCell(column).setCellValue(TEXT[(row * TEXT_COLUMNS + column) % TEXTS]);
          }
        }
      }
      save(book, path);
    }
  }

  // The workbook of R1, for the insertion of a row: POI can't move rows in those of other writers.
  static void make(String path) throws Exception {
    try (HSSFWorkbook book = new HSSFWorkbook()) {
      for (int row = 0; row < ROWS; ++row) {
        HSSFSheet sheet = row % (ROWS / 2) == 0 ? book.createSheet() : book.getSheetAt(row / (ROWS / 2));
        HSSFRow made = sheet.createRow(row % (ROWS / 2));
        for (int column = 0; column < COLUMNS; ++column) {
          made.createCell(column).setCellValue(row * 1.37 + column * 0.001 + 0.1);
        }
      }
      save(book, path);
    }
  }

  static void run(String way, String job, String input, String output) throws Exception {
    if (job.startsWith("R")) {
      if (way.equals("event")) {
        readEvents(input);
      } else {
        readWorkbook(input);
      }
    } else if (job.startsWith("W")) {
      write(job, output);
    } else {
      change(job, output);
    }
  }

  public static void main(String[] arguments) throws Exception {
    if (arguments[0].equals("make")) {
      make(arguments[1]);
      return;
    }
    String job = arguments[1];
    int warmUps = Integer.parseInt(arguments[4]);
    int repeats = Integer.parseInt(arguments[5]);
    OperatingSystemMXBean processor = (OperatingSystemMXBean) ManagementFactory.getOperatingSystemMXBean();
    for (int i = -warmUps; i < repeats; ++i) {
      if (job.startsWith("E") || job.startsWith("I")) {
        Files.copy(Path.of(arguments[2]), Path.of(arguments[3]), StandardCopyOption.REPLACE_EXISTING);
      }
      long begin = System.nanoTime();
      long cpu = processor.getProcessCpuTime();
      run(arguments[0], job, arguments[2], arguments[3]);
      double seconds = (System.nanoTime() - begin) / 1e9;
      if (i >= 0) System.out.printf("%.6f %.6f%n", seconds, (processor.getProcessCpuTime() - cpu) / 1e9);
    }
  }
}
