namespace Morvenhal.RF.KST.QORNWrapper.Tests;

/// <summary>The translation of failures. The only tests that log, so that entries can be counted.</summary>
public sealed class QORNExceptionCatcherTests : IDisposable
{
    private readonly List<Error> m_log = [];

    public QORNExceptionCatcherTests() => Error.Logged += m_log.Add;

    public void Dispose() => Error.Logged -= m_log.Add;

    [Fact]
    public void NewException_OfALackOfMemory_IsTheRuntimesOwn()
    {
        Exception e = QORNExceptionCatcher.NewException(
            new QORNException(11001, "memory allocation error", "infra/Vector", 12));
        Assert.IsType<OutOfMemoryException>(e);
        Assert.Empty(m_log);
    }

    [Fact]
    public void NewException_OfANativeFailure_HasItsPlaceAndCode()
    {
        Exception e = QORNExceptionCatcher.NewException(new QORNException(5, "some message", "dsp\\Module", 123));
        var catcher = Assert.IsType<QORNExceptionCatcher>(e);
        Assert.Equal("5 - some message", catcher.Message);
        Assert.Equal("dsp\\Module", catcher.FileName);
        Assert.Equal(123, catcher.LineNumber);
        Assert.Equal(5, catcher.ErrorCode);
        Assert.IsAssignableFrom<ApplicationException>(catcher);
        Assert.Empty(m_log);
    }

    [Fact]
    public void NewException_OfCode999_IsUnspecifiedAndLogsOnce()
    {
        Exception e = QORNExceptionCatcher.NewException(new QORNException(999, "inner message", "utils\\IQFReader", 45));
        var catcher = Assert.IsType<QORNExceptionCatcher>(e);
        Assert.Equal("Unspecified Error", catcher.Message);
        Assert.Equal(999, catcher.ErrorCode);
        Error entry = Assert.Single(m_log);
        Assert.Equal(
            "Analysis Failure: Unspecified Error\ninner message QORNErrorCode:999" + Environment.NewLine
                + "Line:45 File:IQFReader",
            entry.Message);
        Assert.Equal(7, entry.Source);
        Assert.Equal(1, (int)entry.Severity);
    }

    [Fact]
    public void NewException_OfAManagedLackOfMemory_IsTheSameObject()
    {
        var e = new OutOfMemoryException("mine");
        Assert.Same(e, QORNExceptionCatcher.NewException(e));
    }

    [Fact]
    public void NewException_OfAManagedException_HasItsMessage()
    {
        var cause = new InvalidOperationException("what went wrong");
        var e = Assert.IsType<QORNExceptionCatcher>(QORNExceptionCatcher.NewException(cause));
        Assert.Equal("what went wrong", e.Message);
        Assert.Same(cause, e.InnerException);
        Assert.Equal(0, e.ErrorCode);
        Assert.Equal(0, e.LineNumber);
        Assert.Empty(e.FileName);
    }

    [Fact]
    public void CreateMessage_IsTheReleaseMessage()
    {
        Assert.Equal("12 - text", QORNExceptionCatcher.CreateMessage(new QORNException(12, "text", "infra/Vector", 1)));
        Assert.Equal("12 - text", QORNExceptionCatcher.CreateReleaseMessage(new QORNException(12, "text", "f", 1)));
        Assert.Equal("text", QORNExceptionCatcher.CreateMessage(new ArgumentException("text")));
        Assert.Equal("text", QORNExceptionCatcher.CreateReleaseMessage(new ArgumentException("text")));
        Assert.Empty(m_log);
    }

    [Theory]
    [InlineData("infra/Vector", "Vector")]
    [InlineData("math\\CubicHermiteInterpolation", "CubicHermiteInterpolation")]
    [InlineData("alone", "alone")]
    [InlineData("", "")]
    public void CreateDebugMessage_OfANativeFailure_NamesTheFileWithoutItsFolder(string path, string name)
    {
        string message = QORNExceptionCatcher.CreateDebugMessage(new QORNException(3, "some message", path, 77));
        Assert.Equal("some message QORNErrorCode:3" + Environment.NewLine + "Line:77 File:" + name, message);
    }

    [Fact]
    public void CreateDebugMessage_OfAManagedException_HasItsStackTrace()
    {
        var unthrown = new ArgumentException("text");
        Assert.Equal("text StackTrace:", QORNExceptionCatcher.CreateDebugMessage(unthrown));
        var thrown = Assert.Throws<ArgumentException>((Action)(() => throw unthrown));
        Assert.NotNull(thrown.StackTrace);
        Assert.Equal("text StackTrace:" + thrown.StackTrace, QORNExceptionCatcher.CreateDebugMessage(thrown));
    }

    [Fact]
    public void QORNException_GivesBackItsValues()
    {
        var e = new QORNException(1, "message", "file", 2);
        Assert.Equal(1, e.GetErrorCode());
        Assert.Equal("message", e.GetMessage());
        Assert.Equal("file", e.GetFileName());
        Assert.Equal(2, e.GetLineNumber());
    }
}
